// Messaging stand-in: internal-error reports and channel-filtered debug output.
//
// Debug output is steered by KORVEL_DEBUG: comma-separated entries "CHANNEL" (every level) or
// "CHANNEL:LEVEL" (levels up to LEVEL). Each message is one line "CHANNEL: text" on stderr.
#pragma once

#include <cstdarg>

enum MSG_D_LEVEL : int {
  MSG_D_LEVEL_0 = 0,
  MSG_D_LEVEL_1 = 1,
  MSG_D_LEVEL_2 = 2,
  MSG_D_LEVEL_3 = 3,
};

class MSG_INTERNAL_ERROR {
 public:
  // Writes the condition, module, file and line to stderr and aborts the process.
  [[noreturn]] static void report(const char* condition, const char* module, const char* file,
                                  int line);
};

// True from the moment the messaging library is loaded.
extern bool msg_initialized;

// Prints the formatted text when `channel` is enabled at `level`. Returns whether it printed.
bool msg_local_vdebug(const char* channel, MSG_D_LEVEL level, const char* format, va_list args);

// Prints the formatted text on `channel` without testing whether the channel is enabled.
bool msg_local_vdebug_no_checking_impl(const char* channel, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

class MSG_REPORT;

class MSG_POST {
 public:
  virtual ~MSG_POST();
};

// A debug reporter; its query tells whether a channel prints at a level.
class MSG_D : public MSG_POST {
 public:
  explicit MSG_D(MSG_REPORT* report);
  ~MSG_D() override;

  // True when any debug output is enabled (KORVEL_DEBUG is non-empty). `channel` is not used.
  static bool debug_messages_enabled(const char* channel);

  // True when `channel` prints messages of `level`.
  bool is_channel_enabled(const char* channel, MSG_D_LEVEL level) const;

 private:
  MSG_REPORT* m_report;
};
