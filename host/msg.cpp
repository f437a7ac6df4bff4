// Messaging stand-in: KORVEL_DEBUG is read at every query, so tests can switch channels freely.
#include "msg.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

bool msg_initialized = true;

namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return std::string();
  const auto last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

// The highest level at which `channel` prints, or -1 when it does not print at all.
long enabled_level(const char* channel) {
  const char* setting = std::getenv("KORVEL_DEBUG");
  if (setting == nullptr || channel == nullptr) return -1;
  const std::string all(setting);
  long best = -1;
  std::size_t start = 0;
  while (start <= all.size()) {
    std::size_t end = all.find(',', start);
    if (end == std::string::npos) end = all.size();
    const std::string entry = trimmed(all.substr(start, end - start));
    start = end + 1;
    if (entry.empty()) continue;
    const auto colon = entry.find(':');
    const std::string name = trimmed(entry.substr(0, colon));
    if (name != channel) continue;
    long level = 1L << 30;  // no level given: every level
    if (colon != std::string::npos) {
      const std::string digits = trimmed(entry.substr(colon + 1));
      char* stop = nullptr;
      level = std::strtol(digits.c_str(), &stop, 10);
      if (digits.empty() || *stop != '\0') continue;  // a malformed level enables nothing
    }
    if (level > best) best = level;
  }
  return best;
}

bool print_line(const char* channel, const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  if (length < 0) return false;
  std::vector<char> text(static_cast<std::size_t>(length) + 1);
  std::vsnprintf(text.data(), text.size(), format, args);
  std::string line = std::string(channel) + ": " + text.data() + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
  return true;
}

}  // namespace

void MSG_INTERNAL_ERROR::report(const char* condition, const char* module, const char* file,
                                int line) {
  std::fprintf(stderr, "Internal Error: %s\nModule: %s\nFile: %s\nLine: %d\n",
               condition ? condition : "(null)", module ? module : "(null)",
               file ? file : "(null)", line);
  std::fflush(stderr);
  std::abort();
}

bool msg_local_vdebug(const char* channel, MSG_D_LEVEL level, const char* format, va_list args) {
  if (format == nullptr || enabled_level(channel) < static_cast<long>(level)) return false;
  return print_line(channel, format, args);
}

bool msg_local_vdebug_no_checking_impl(const char* channel, const char* format, ...) {
  if (channel == nullptr || format == nullptr) return false;
  va_list args;
  va_start(args, format);
  const bool printed = print_line(channel, format, args);
  va_end(args);
  return printed;
}

MSG_POST::~MSG_POST() = default;

MSG_D::MSG_D(MSG_REPORT* report) : m_report(report) {}

MSG_D::~MSG_D() = default;

bool MSG_D::debug_messages_enabled(const char*) {
  const char* setting = std::getenv("KORVEL_DEBUG");
  return setting != nullptr && setting[0] != '\0';
}

bool MSG_D::is_channel_enabled(const char* channel, MSG_D_LEVEL level) const {
  return enabled_level(channel) >= static_cast<long>(level);
}
