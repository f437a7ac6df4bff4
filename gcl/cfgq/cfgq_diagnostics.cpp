// The library's debug output.
#include "cfgq_diagnostics.h"

#include <cstdarg>

#include "msg.h"

namespace {

constexpr const char* channel = "CFGQ";

// msg_local_vdebug takes its arguments as a va_list only.
void post_debug(const char* format, ...) {
  va_list args;
  va_start(args, format);
  msg_local_vdebug(channel, MSG_D_LEVEL_2, format, args);
  va_end(args);
}

}  // namespace

bool cfgq_debug_enabled() {
  if (!msg_initialized) return false;
  if (!MSG_D::debug_messages_enabled(nullptr)) return false;
  const MSG_D reporter(nullptr);
  return reporter.is_channel_enabled(channel, MSG_D_LEVEL_2);
}

void cfgq_debug(const std::string& text) { post_debug("%s", text.c_str()); }
