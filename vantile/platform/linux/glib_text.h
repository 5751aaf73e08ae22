#pragma once

#include <glib.h>

#include <memory>

namespace vantile {

struct FreeGlibText {
  void operator()(char* text) const { g_free(text); }
};
/// Text that GLib handed out to be freed; null for none.
using GlibText = std::unique_ptr<char, FreeGlibText>;

}  // namespace vantile
