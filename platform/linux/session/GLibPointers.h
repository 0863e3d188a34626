// GLib's objects with an owner.
#pragma once

#include <gio/gio.h>

#include <memory>

namespace vantory::desktop {

template <auto release>
struct Releaser {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};

template <class T>
using ObjectPointer = std::unique_ptr<T, Releaser<g_object_unref>>;
using VariantPointer = std::unique_ptr<GVariant, Releaser<g_variant_unref>>;
using ErrorPointer = std::unique_ptr<GError, Releaser<g_error_free>>;
using TextPointer = std::unique_ptr<char, Releaser<g_free>>;
using TextListPointer = std::unique_ptr<char*, Releaser<g_strfreev>>;

// Takes a value as GLib's constructors return it, which nobody owns yet.
inline VariantPointer owned(GVariant* fresh) {
  return VariantPointer(g_variant_ref_sink(fresh));
}

}  // namespace vantory::desktop
