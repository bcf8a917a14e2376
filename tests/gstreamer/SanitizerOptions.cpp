// What AddressSanitizer is told about the libraries that come uninstrumented.
#ifdef __SANITIZE_ADDRESS__
#define VISIBLE extern "C" [[gnu::visibility("default")]]

/// They keep no frame pointers; a leak's stack must be read far enough to tell whose it is.
VISIBLE const char* __asan_default_options();
VISIBLE const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }

VISIBLE const char* __lsan_default_suppressions();
VISIBLE const char* __lsan_default_suppressions() {
  return
      // GLib's table of quarks, made when it is loaded and kept for good.
      "leak:call_init\n"
      // 32 bytes that souphttpsrc leaves with each session that it ends.
      "leak:libgstsoup.so\n";
}

#endif
