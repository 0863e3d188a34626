// The program's own images, drawn at whatever size and scale is asked for.
#pragma once

#include <QIcon>
#include <string>

namespace vantory::icons {

// The image of a resource name of the catalog, such as "FCPX.png", or "VNT-icon", or one of the icon theme; an image of
// its own for a name that is not known.
QIcon named(const std::string& resourceName);

// A one-coloured sign that takes the colour of the text around it, also after that has changed.
QIcon symbol(const QString& name);

// The program itself.
QIcon application();

}  // namespace vantory::icons
