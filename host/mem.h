// Memory stand-in: printf-style formatting into a std::string and the per-module initialisers.
#pragma once

#include <string>

namespace MEM_DETAIL {
// Formats printf-style into *out, replacing its content. A null `out` or `format` does nothing.
void stl_raw_sprintf(std::string* out, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
}  // namespace MEM_DETAIL

// A static object of a module: registers the module name for the module's lifetime.
class MEM_INITIALIZER {
 public:
  explicit MEM_INITIALIZER(const char* module);
  ~MEM_INITIALIZER();
  MEM_INITIALIZER(const MEM_INITIALIZER&) = delete;
  MEM_INITIALIZER& operator=(const MEM_INITIALIZER&) = delete;

  // How many initialisers of `module` are alive.
  static int live_count(const char* module);

 private:
  std::string m_module;
};
