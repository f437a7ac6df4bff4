// Fixtures and helpers shared by the C++ tests.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <gtest/gtest.h>

namespace cfgq_test {

// The file's bytes, or an empty array when it can't be read.
inline QByteArray read_bytes(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file's contents with `bytes`; a failure fails the calling test.
inline void write_file(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
  ASSERT_EQ(file.write(bytes), bytes.size()) << path.toStdString();
}

// True when another user can reach `path`: every directory above it lets others pass. A build
// below a private directory (a clone in `mktemp -d`) can't be run as another user.
inline bool reachable_by_others(const QString& path) {
  for (QDir dir = QFileInfo(path).dir();; dir.cdUp()) {
    if (!(QFileInfo(dir.absolutePath()).permissions() & QFileDevice::ExeOther)) return false;
    if (dir.isRoot()) return true;
  }
}

// The name under which the stand-ins read a variable on this platform: on Windows the profile
// is USERPROFILE and the temporary directory TMP.
inline QByteArray platform_name(const char* name) {
#ifdef _WIN32
  if (qstrcmp(name, "HOME") == 0) return "USERPROFILE";
  if (qstrcmp(name, "TMPDIR") == 0) return "TMP";
#endif
  return name;
}
inline std::optional<std::string> get_env(const char* name) {
  if (!qEnvironmentVariableIsSet(platform_name(name))) return std::nullopt;
  return qEnvironmentVariable(platform_name(name)).toStdString();
}
// Sets (or, with nullopt, unsets) an environment variable.
inline void set_env(const char* name, const std::optional<std::string>& value) {
  if (value) {
#ifdef _WIN32
    // The 8-bit form would take the UTF-8 bytes for the code page's characters.
    _wputenv_s(QString::fromLatin1(platform_name(name)).toStdWString().c_str(),
               QString::fromStdString(*value).toStdWString().c_str());
#else
    qputenv(platform_name(name), QByteArray::fromStdString(*value));
#endif
  } else {
    qunsetenv(platform_name(name));
  }
}

// Sets (or, with nullopt, unsets) an environment variable and puts the old value back.
class EnvGuard {
 public:
  EnvGuard(const char* name, std::optional<std::string> value)
      : m_name(name), m_old(get_env(name)) {
    set_env(name, value);
  }
  ~EnvGuard() { set_env(m_name.c_str(), m_old); }
  EnvGuard(const EnvGuard&) = delete;
  EnvGuard& operator=(const EnvGuard&) = delete;

 private:
  std::string m_name;
  std::optional<std::string> m_old;
};

// The file's bytes under a name of their own, for a raw settings object: Qt keeps what it read of
// a file by name and tells a change only by size and modification time in milliseconds, so a
// raw reader of the file itself could go on with what an earlier raw reader read.
class fresh_copy {
 public:
  explicit fresh_copy(const QString& path) : m_file(QDir::tempPath() + "/cfgq-test-XXXXXX") {
    if (m_file.open()) {
      m_file.write(read_bytes(path));
      m_file.close();
    }
  }
  QString path() const { return m_file.fileName(); }

 private:
  QTemporaryFile m_file;
};

// A fresh HOME for each test, with every variable that steers the library reset: the view
// works on <HOME>/korvel2.kreg, version 25.1, no switches, no isolation, no debug output.
class SettingsTest : public ::testing::Test {
 protected:
  SettingsTest()
      : m_home_guard("HOME", m_home.path().toStdString()),
        m_version("KORVEL_VERSION", std::nullopt),
        m_versions("KORVEL_VERSIONS", std::nullopt),
        m_config("KORVEL_CONFIG_ON", std::nullopt),
        m_regtest("KORVEL_REGTEST", std::nullopt),
        m_debug("KORVEL_DEBUG", std::nullopt),
        m_qpa("QT_QPA_PLATFORM", std::nullopt),
        m_pbuild("PBUILD_BUILD", std::nullopt) {}

  QString home() const { return m_home.path(); }
  QString profile_file() const { return QDir(m_home.path()).absoluteFilePath("korvel2.kreg"); }

  // Writes `bytes` as the profile settings file.
  void write_profile_file(const QByteArray& bytes) const { write_file(profile_file(), bytes); }
  QByteArray profile_bytes() const { return read_bytes(profile_file()); }

  // Every key at or below `group` of the profile file, sorted, as "path=value".
  QStringList listing(const QString& group = QString()) const {
    const fresh_copy copy(profile_file());
    QSettings raw(copy.path(), QSettings::IniFormat);
    raw.beginGroup(group);
    QStringList lines;
    for (const QString& key : raw.allKeys()) lines << key + "=" + raw.value(key).toString();
    lines.sort();
    return lines;
  }

  // Reads one value of the profile file through a raw settings object.
  QVariant raw_value(const QString& path) const {
    const fresh_copy copy(profile_file());
    QSettings raw(copy.path(), QSettings::IniFormat);
    return raw.value(path);
  }

 private:
  QTemporaryDir m_home;
  EnvGuard m_home_guard;
  EnvGuard m_version, m_versions, m_config, m_regtest, m_debug, m_qpa, m_pbuild;
};

}  // namespace cfgq_test
