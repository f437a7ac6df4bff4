#include "mem.h"

#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>
#include <vector>

namespace {

std::mutex& registry_mutex() {
  static std::mutex mutex;
  return mutex;
}

std::map<std::string, int>& registry() {
  // Built by the first initialiser, so it is destroyed after the last one.
  static std::map<std::string, int> modules;
  return modules;
}

}  // namespace

void MEM_DETAIL::stl_raw_sprintf(std::string* out, const char* format, ...) {
  if (out == nullptr || format == nullptr) return;
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  if (length < 0) {
    va_end(args);
    out->clear();
    return;
  }
  std::vector<char> text(static_cast<std::size_t>(length) + 1);
  std::vsnprintf(text.data(), text.size(), format, args);
  va_end(args);
  out->assign(text.data(), static_cast<std::size_t>(length));
}

MEM_INITIALIZER::MEM_INITIALIZER(const char* module) : m_module(module ? module : "") {
  std::lock_guard<std::mutex> lock(registry_mutex());
  ++registry()[m_module];
}

MEM_INITIALIZER::~MEM_INITIALIZER() {
  std::lock_guard<std::mutex> lock(registry_mutex());
  --registry()[m_module];
}

int MEM_INITIALIZER::live_count(const char* module) {
  std::lock_guard<std::mutex> lock(registry_mutex());
  const auto it = registry().find(module ? module : "");
  return it == registry().end() ? 0 : it->second;
}
