// The persistent environment stores outside Windows: two files in environment.d format (see
// cfgq_setenv_envd.h), read by the session manager's environment generator when a user's
// session starts.
//
// The generator reads every *.conf of the user's and the machine's environment.d directories in
// the order of their file names, a user's file hiding a machine file of the same name. So the
// machine store is 80-korvel.conf and the user store 90-korvel.conf: both are read, the user's
// last, and a "${PATH}" in the user's store sees what the machine's did to PATH.
//
// A store is written under its lock ("<store>.lock") as a whole new file staged beside the old
// one (every write checked, flushed to disk, the old file's owner and mode), then renamed over
// it: a failure at any point leaves the old bytes, and concurrent writers all keep their lines. New files are 0600 and new directories 0700 whatever the umask.
// A store that is a link is written where the link points, and only when that is a regular file.
// May use: cfgq_file_location, cfgq_file_platform, cfgq_file_write, cfgq_setenv, cfgq_setenv_envd.
#include "cfgq_setenv.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <QByteArray>
#include <QDir>
#include <QFileInfo>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cfgq_setenv_envd.h"
#include "cfgq_file_write.h"
#include "cfgq_file_platform.h"
#include "cfgq_file_location.h"

namespace {

const QString user_file_name = QStringLiteral("90-korvel.conf");
const QString system_file = QStringLiteral("/etc/environment.d/80-korvel.conf");

using cfgq_env::write_outcome;
using cfgq_env::write_result;

write_result refused(const QString& reason) { return {write_outcome::refused, reason}; }
write_result failed(const QString& why) { return {write_outcome::failed, why}; }

QString system_reason(int error) { return QString::fromLocal8Bit(std::strerror(error)); }
QByteArray native(const QString& path) { return QFile::encodeName(path); }

// A usable home directory is an absolute path to an existing directory.
bool usable_home(const QByteArray& path) {
  struct stat st;
  return path.startsWith('/') && stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

// HOME, else the password database's entry for this user; empty when neither is usable.
QString home_directory() {
  const QByteArray from_environment = qgetenv("HOME");
  if (usable_home(from_environment)) return QFile::decodeName(from_environment);
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  QByteArray buffer(size > 0 ? size : 16384, '\0');
  struct passwd entry;
  struct passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE &&
         buffer.size() < (1 << 20)) {
    buffer.resize(buffer.size() * 2);
  }
  if (found == nullptr || !usable_home(QByteArray(found->pw_dir))) return QString();
  return QFile::decodeName(found->pw_dir);
}

// Where a write of `location` goes: the path itself, or the regular file a link points to.
// Empty, with *why, when it must not be written.
QByteArray write_target(const QString& location, QString* why) {
  const QByteArray path = native(QFileInfo(location).absoluteFilePath());
  struct stat st;
  if (lstat(path.constData(), &st) != 0) return path;  // no file yet
  if (S_ISLNK(st.st_mode)) {
    if (stat(path.constData(), &st) != 0) {
      *why = QStringLiteral("a link to nothing (%1)").arg(system_reason(errno));
      return QByteArray();
    }
    if (!S_ISREG(st.st_mode)) {
      *why = QStringLiteral("a link to something other than a regular file");
      return QByteArray();
    }
    return native(QFileInfo(location).canonicalFilePath());
  }
  if (!S_ISREG(st.st_mode)) {
    *why = QStringLiteral("not a regular file");
    return QByteArray();
  }
  return path;
}

// The store's bytes: nullopt with *why set when it can't be read; empty when there is none. A
// store that is not a regular file (a pipe, a device) is refused at once, never waited on.
std::optional<QByteArray> read_store(const QString& location, QString* why) {
  cfgq_platform::owned_fd fd(
      open(native(location).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (fd.get() < 0) {
    if (errno == ENOENT) return QByteArray();
    *why = system_reason(errno);
    return std::nullopt;
  }
  struct stat st;
  if (fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
    *why = QStringLiteral("not a regular file");
    return std::nullopt;
  }
  QByteArray bytes;
  char buffer[65536];
  for (;;) {
    const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      *why = system_reason(errno);
      return std::nullopt;
    }
    if (n == 0) return bytes;
    bytes.append(buffer, n);
  }
}

// The parsed store as the generator takes it: nothing at all from a file it would not use.
envd::parsed_file usable_store(const QString& location) {
  QString why;
  const std::optional<QByteArray> bytes = read_store(location, &why);
  if (!bytes) return envd::parsed_file();
  envd::parsed_file file = envd::parse(*bytes);
  if (file.nul_at >= 0 || file.bad_utf8_at >= 0) return envd::parsed_file();
  return file;
}

// 1-based line of byte `at`.
qsizetype line_of(const QByteArray& bytes, qsizetype at) { return bytes.left(at).count('\n') + 1; }

// Why the session manager would not use these bytes; empty when it would.
QString unusable_reason(const QByteArray& bytes, const envd::parsed_file& file) {
  if (file.nul_at >= 0) {
    return QStringLiteral("line %1 holds a NUL byte, so the session manager ignores the whole "
                          "file; remove it by hand")
        .arg(line_of(bytes, file.nul_at));
  }
  if (file.bad_utf8_at >= 0) {
    return QStringLiteral("line %1 holds a value that is not UTF-8, which stops the session "
                          "manager's reader; correct it by hand")
        .arg(line_of(bytes, file.bad_utf8_at));
  }
  return QString();
}

}  // namespace

namespace cfgq_env {

QString no_location_reason() {
  return QStringLiteral("no home directory (HOME is unset or not a directory, and the password "
                        "database names none that is)");
}

QString store_location(store which) {
  if (which == store::system) {
    const QString override_path = qEnvironmentVariable("KORVEL_SYSTEM_ENV_FILE");
    return override_path.isEmpty() ? system_file : override_path;
  }
  const QString override_path = qEnvironmentVariable("KORVEL_USER_ENV_FILE");
  if (!override_path.isEmpty()) return override_path;
  // A relative XDG_CONFIG_HOME is invalid and ignored, as the session manager does.
  QString config_home = qEnvironmentVariable("XDG_CONFIG_HOME");
  if (config_home.isEmpty() || QDir::isRelativePath(config_home)) {
    const QString home = home_directory();
    if (home.isEmpty()) return QString();
    config_home = home + QStringLiteral("/.config");
  }
  return config_home + QStringLiteral("/environment.d/") + user_file_name;
}

std::optional<QString> store_text(const QString& location, const QString& name) {
  if (location.isEmpty()) return std::nullopt;
  const std::optional<QByteArray> text = envd::lookup(usable_store(location), name.toUtf8());
  if (!text) return std::nullopt;
  return QString::fromUtf8(*text);
}

QString store_read(const QString& location, const QString& name) {
  // A login form reads as the list it stands for (cfgq_setenv_envd.h).
  if (const std::optional<QString> text = store_text(location, name)) {
    return QString::fromUtf8(envd::from_login_form(name.toUtf8(), text->toUtf8()));
  }
  const QString user_location = store_location(store::user);
  const bool session_defines = !qgetenv(name.toLocal8Bit().constData()).isEmpty() ||
                               envd::extends_login_value(name.toUtf8());
  if (location.isEmpty() || location != user_location || !session_defines ||
      store_text(store_location(store::system), name)) {
    return QString();
  }
  return QStringLiteral("${%1}").arg(name);
}

std::vector<std::pair<QString, QString>> store_variables(const QString& location) {
  std::vector<std::pair<QString, QString>> result;
  if (location.isEmpty()) return result;
  for (const auto& [name, text] : envd::variables(usable_store(location))) {
    result.emplace_back(QString::fromUtf8(name), QString::fromUtf8(text));
  }
  return result;
}

QString store_problem(const QString& location) {
  if (location.isEmpty()) return no_location_reason();
  QString why;
  const std::optional<QByteArray> bytes = read_store(location, &why);
  if (!bytes) return why;
  return unusable_reason(*bytes, envd::parse(*bytes));
}

write_result store_write(const QString& location, const QString& name, const QString& text) {
  const QByteArray name_bytes = name.toUtf8();
  if (!envd::is_valid_name(name_bytes)) {
    return refused(QStringLiteral("\"%1\" is not a variable name ([A-Za-z_][A-Za-z0-9_]*)")
                       .arg(name));
  }
  if (text.contains(QChar::Null)) return refused(QStringLiteral("the value holds a NUL"));
  // Unpaired surrogates have no UTF-8 form.
  if (!text.isValidUtf16()) return refused(QStringLiteral("the value is not valid Unicode"));
  if (location.isEmpty()) return failed(no_location_reason());

  QString why;
  const QByteArray target = write_target(location, &why);
  if (target.isEmpty()) return failed(why);
  // The line is replaced under the store's lock: what was read and what is written belong
  // together, so concurrent writes of other variables are all kept.
  const QString target_path = QFile::decodeName(target);
  if (!cfgq_platform::make_directories(QFileInfo(target_path).absolutePath(), &why)) {
    return failed(why);
  }
  cfgq_file_write write(target_path);
  qint64 holder = 0;
  if (!write.lock(&why, &holder)) return failed(why);
  const cfgq_platform::file_state old_state = cfgq_platform::state_of(target_path, true);
  const std::optional<QByteArray> old_bytes = read_store(target_path, &why);
  if (!old_bytes) return failed(why);
  const envd::parsed_file old_file = envd::parse(*old_bytes);
  why = unusable_reason(*old_bytes, old_file);
  if (!why.isEmpty()) return failed(why);

  const QByteArray value = envd::to_login_form(name_bytes, text.toUtf8());
  const QByteArray line = envd::assignment_line(name_bytes, value);
  const std::optional<QByteArray> new_bytes =
      envd::edited(*old_bytes, old_file, name_bytes, text.isEmpty() ? nullptr : &line);
  if (!new_bytes) {
    return failed(QStringLiteral("the file ends inside a quote that is never closed (line %1); "
                                 "close it by hand")
                      .arg(line_of(*old_bytes, old_file.assignments.back().begin)));
  }
  if (*new_bytes == *old_bytes) return {write_outcome::written, QString()};

  // A last check that the edit reads back as meant, whatever odd text the file held.
  const envd::parsed_file new_file = envd::parse(*new_bytes);
  auto others = [&](const envd::parsed_file& file) {
    auto all = envd::variables(file);
    all.erase(std::remove_if(all.begin(), all.end(),
                             [&](const auto& entry) { return entry.first == name_bytes; }),
              all.end());
    return all;
  };
  const std::optional<QByteArray> now = envd::lookup(new_file, name_bytes);
  if (others(old_file) != others(new_file) ||
      (text.isEmpty() ? now.has_value() : now != value)) {
    return refused(QStringLiteral("the edited file would not read back as written"));
  }
  if (!write.stage_bytes(*new_bytes, &why) || !write.commit(old_state, &why)) return failed(why);
  return {write_outcome::written, QString()};
}

void announce_change_by_platform() {}

}  // namespace cfgq_env
