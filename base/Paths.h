// Questions about path strings that never touch the disk.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantory::paths {

// "/a" and "b" and "/a" and "/b" give "/a/b"; a trailing slash of the result is dropped.
std::string join(std::string_view folder, std::string_view component);
// "/a/b" gives "b", "/a/b/" gives "b", "/" gives "/".
std::string lastComponent(std::string_view path);
// "/a/b" gives "/a", "/a" gives "/", "a" gives "".
std::string parent(std::string_view path);
// "a.tar.gz" gives "gz"; "a", ".hidden" and "a." give "". Looks at the last component only.
std::string extension(std::string_view path);
// The path without its extension and the dot before it.
std::string withoutExtension(std::string_view path);
// The root keeps its slash.
std::string_view withoutTrailingSlashes(std::string_view path);
// The path itself, or where it is relative below the folder; normalized.
std::string absolute(std::string_view path, std::string_view folder);
// Without ".", doubled slashes and a slash at the end; ".." takes back the component before it.
std::string normalized(std::string_view path);
// Parts of the path that is given. A leading "/" is a component of its own, a trailing "/" gives a last component "/".
std::vector<std::string_view> components(std::string_view path);
// True when the path is the folder or lies below it; tested on whole components, ".." is never resolved and makes it
// false.
bool isWithin(std::string_view path, std::string_view folder);

}  // namespace vantory::paths
