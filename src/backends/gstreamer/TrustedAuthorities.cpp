#include "backends/gstreamer/TrustedAuthorities.h"

#include <gio/gio.h>

#include "backends/gstreamer/GObjects.h"

namespace xel {

std::optional<std::string> trustAuthoritiesOf(const std::string& caFile) {
  const GTextHandle path(g_canonicalize_filename(caFile.c_str(), nullptr));
  GError* error = nullptr;
  GTlsDatabase* const authorities = g_tls_file_database_new(path.get(), &error);
  if (!authorities) {
    const GErrorHandle held(error);
    return error->message;
  }
  g_tls_backend_set_default_database(g_tls_backend_get_default(), authorities);
  g_object_unref(authorities);
  return std::nullopt;
}

}  // namespace xel
