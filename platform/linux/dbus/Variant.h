// A value of GLib's, let go when it goes out of scope.
#pragma once

#include <memory>

#include <glib.h>

namespace tavo {

struct UnrefVariant {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};

using Variant = std::unique_ptr<GVariant, UnrefVariant>;

}  // namespace tavo
