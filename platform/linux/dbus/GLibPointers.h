// Owning pointers for the reference-counted values of GLib.
#pragma once

#include <memory>

#include <gio/gio.h>

namespace tavo {

struct UnrefObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};

struct UnrefVariant {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};

template<typename Object>
using GObjectPointer = std::unique_ptr<Object, UnrefObject>;

using Variant = std::unique_ptr<GVariant, UnrefVariant>;

}  // namespace tavo
