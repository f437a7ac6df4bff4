// cfgq_setenv: store choice, list rules and the process environment, on the platform's store
// layer (cfgq_setenv_posix.cpp or cfgq_setenv_win.cpp).
#include "cfgq.h"
#include "cfgq_setenv.h"
#include "cfgq_file_failure.h"

#include <atomic>
#include <cstdarg>
#include <string>

#include <QByteArray>
#include <QStringList>
#include <fmt/format.h>

#include "msg.h"

namespace {

constexpr const char* module_name = "CFGQ";
constexpr QChar default_separator = QLatin1Char(';');

std::atomic<cfgq_env::announcer> current_announcer{nullptr};

// msg_local_vdebug takes its arguments as a va_list only.
void post_debug(const char* format, ...) {
  va_list args;
  va_start(args, format);
  msg_local_vdebug(module_name, MSG_D_LEVEL_2, format, args);
  va_end(args);
}

// Passed as the argument of "%s": names, values and paths may contain '%'.
void report(const std::string& text) {
  if (!msg_initialized) return;
  post_debug("%s", text.c_str());
}

}  // namespace

namespace cfgq_env {

QString store_name(store which) {
  return which == store::system ? QStringLiteral("system") : QStringLiteral("user");
}

announcer set_announcer(announcer replacement) {
  return current_announcer.exchange(replacement);
}

void announce_change() {
  const announcer call = current_announcer.load();
  if (call != nullptr) {
    call();
  } else {
    announce_change_by_platform();
  }
}

}  // namespace cfgq_env

QString read_native_setting(const QString& location, const QString& env_name) {
  return cfgq_env::store_read(location, env_name);
}

bool write_native_setting(const QString& location, const QString& env_name, const QString& text) {
  const cfgq_env::write_result result = cfgq_env::store_write(location, env_name, text);
  if (result.outcome == cfgq_env::write_outcome::written) return true;
  const char* what =
      result.outcome == cfgq_env::write_outcome::refused ? "refused" : "could not be written";
  const QString shown = location.isEmpty() ? QStringLiteral("the user store") : location;
  report(fmt::format("cfgq_setenv: {} {} to {}: {}", env_name.toStdString(), what,
                     shown.toStdString(), result.reason.toStdString()));
  // The result stays true; the cfgq tool asks afterwards.
  cfgq_file_note_failure({shown, result.reason, 0});
  return false;
}

bool set_persistent_environment(const QString& env_name, const QString& env_value, QString& scope,
                                bool append, const QString& separator) {
  // An empty separator would split between every character.
  const QString sep = separator.isEmpty() ? QString(default_separator) : separator;
  using cfgq_env::store;
  const QString system_location = cfgq_env::store_location(store::system);
  const QString user_location = cfgq_env::store_location(store::user);
  const QString system_text = read_native_setting(system_location, env_name);
  const QString user_text = read_native_setting(user_location, env_name);

  // Empty text counts as absent: the user's store wins unless only the machine's holds a value.
  store chosen = store::user;
  QString existing = user_text;
  if (user_text.isEmpty() && !system_text.isEmpty()) {
    chosen = store::system;
    existing = system_text;
  }
  const QString& location = chosen == store::system ? system_location : user_location;

  QString text = env_value;
  if (!existing.isEmpty()) {
    QStringList items = existing.split(sep, Qt::SkipEmptyParts, Qt::CaseSensitive);
    if (items.contains(env_value, Qt::CaseInsensitive)) return false;
    if (append) {
      items.append(env_value);
      text = items.join(sep);
    }
  }
  // Whether the store took the text is reported by write_native_setting and otherwise not
  // looked at: a refused write still counts as done.
  write_native_setting(location, env_name, text);
  scope = cfgq_env::store_name(chosen);
  cfgq_env::announce_change();
  return true;
}

bool cfgq_setenv(const QString& env_name, const QString& env_value, QString& scope, bool append,
                 QString separator, bool update_process) {
  try {
    if (separator.isEmpty()) separator = default_separator;
    if (!set_persistent_environment(env_name, env_value, scope, append, separator)) return false;
    if (update_process) {
      // The process's copy is bytes in the local 8-bit encoding; no item test and no clean-up of
      // empty items here, unlike the stores.
      const QByteArray name = env_name.toLocal8Bit();
      const QByteArray current = qgetenv(name.constData());
      QByteArray value = env_value.toLocal8Bit();
      if (append && !current.isEmpty()) value = current + separator.toLocal8Bit() + value;
      qputenv(name.constData(), value);
    }
    return true;
  } catch (...) {
    // Only running out of memory gets here; nothing may leave the library.
    return false;
  }
}
