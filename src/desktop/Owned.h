// Ownership of what GLib hands out.
#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

namespace quillmark {

struct Release {
    void operator()(GDBusConnection* bus) const { g_object_unref(bus); }
    void operator()(GFile* file) const { g_object_unref(file); }
    void operator()(GVariant* value) const { g_variant_unref(value); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(char* text) const { g_free(text); }
};

template <class T> using Owned = std::unique_ptr<T, Release>;

/// The words of an error, which is freed.
inline std::string takeMessage(GError* error)
{
    return Owned<GError>(error)->message;
}

} // namespace quillmark
