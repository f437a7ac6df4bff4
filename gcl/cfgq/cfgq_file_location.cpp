// Where the settings file lies: the profile's file or the process's temporary one.
#include "cfgq_file_location.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "cfg.h"
#include "fio.h"
#include "gen.h"
#include "tst.h"
#include "ver.h"

#include "cfgq_file_platform.h"

namespace {

// The process's temporary settings file. Filled at the first path computation that obtains one,
// and deleted with its file when the library unloads.
class temp_settings_file {
 public:
  temp_settings_file() = default;
  temp_settings_file(const temp_settings_file&) = delete;
  temp_settings_file& operator=(const temp_settings_file&) = delete;
  ~temp_settings_file() {
    if (!m_path.isEmpty()) FIO_FILE_SYSTEM::remove_if_exists(m_path.toStdString());
  }

  QString path() {
    std::lock_guard<std::mutex> lock(m_mutex);
    // Asked for again while empty: a temporary directory that could not take the file (missing,
    // full) may take it at a later view. Once obtained, the path never changes.
    if (m_path.isEmpty()) {
      m_path = QString::fromStdString(gen_create_temp_file(gen_get_temp_path(), "CFGQ"));
    }
    return m_path;
  }

 private:
  std::mutex m_mutex;
  QString m_path;
};

temp_settings_file temp_registry_file;

// QDir(profile_dir).absoluteFilePath("korvel2.kreg") for a UTF-8 directory path. Each thread
// remembers its last answer for an absolute directory, as the path is worked out for every view.
QString profile_settings_file(const std::string& profile_dir) {
  struct answer {
    std::string dir;
    QString path;
  };
  struct last_answer {
    std::unique_ptr<answer> known;
  };
  std::unique_ptr<answer>& last = cfgq_platform::per_thread<last_answer>().known;
  if (last && last->dir == profile_dir) return last->path;
  const QString dir = QString::fromStdString(profile_dir);
  QString path = QDir(dir).absoluteFilePath(QStringLiteral("korvel2.kreg"));
  // A relative directory is taken from the working directory, which may change in between.
  if (QDir::isAbsolutePath(dir)) last = std::make_unique<answer>(answer{profile_dir, path});
  return path;
}

bool separate_64_bit_settings() {
  // Fixed at the first main-key name of the process; later configuration changes don't count.
  static const bool separate = cfg_is_on("separate_settings_for_64_bit");
  return separate;
}

// True when the environment variable `name` holds exactly `text`; an unset one reads as empty.
// Read as bytes: decoding to a QString first cost a third of each path computation, and an ASCII
// text matches the bytes exactly when it matches their decoded form.
bool environment_is(const char* name, const char* text) {
  const char* value = std::getenv(name);
  return value != nullptr && std::strcmp(value, text) == 0;
}

}  // namespace

bool cfgq_isolated_run(QString* why) {
  const char* cause = nullptr;
  if (tst_is_regtest_mode()) {
    cause = "KORVEL_REGTEST=1";
  } else if (environment_is("QT_QPA_PLATFORM", "minimal")) {
    cause = "QT_QPA_PLATFORM=minimal";
  } else if (environment_is("PBUILD_BUILD", "1")) {
    cause = "PBUILD_BUILD=1";
  }
  if (cause != nullptr && why != nullptr) *why = QString::fromLatin1(cause);
  return cause != nullptr;
}

QString get_main_key_name(const char* version, const char* suffix) {
  QString name = version != nullptr ? QString::fromUtf8(version)
                                    : QString::fromStdString(ver_get_version());
  if (separate_64_bit_settings()) name += QLatin1String("_64-Bit");
  if (suffix != nullptr) {
    const QString given = QString::fromUtf8(suffix);
    if (!name.endsWith(given, Qt::CaseSensitive)) return name + given;
  }
  if (!name.endsWith(QLatin1String("_pro"), Qt::CaseSensitive)) name += QLatin1String("_pro");
  return name;
}

QString get_registry_file_path() {
  // The temporary file is made at the first call of the process, isolated or not, so that every
  // later isolated view of the process finds the same file.
  const QString temp_path = temp_registry_file.path();
  if (cfgq_isolated_run(nullptr)) return temp_path;
  const std::string profile = gen_get_user_profile_directory();
  // Without a profile directory there is no settings file: never one in the working directory.
  if (profile.empty()) return QString();
  return profile_settings_file(profile);
}

QString cfgq_temporary_settings_file() { return temp_registry_file.path(); }

std::string cfgq_temp_directory() { return gen_get_temp_path(); }

QString cfgq_private_base() {
  const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
  if (!runtime.isEmpty()) {
    const cfgq_platform::file_state state = cfgq_platform::state_of(runtime, false);
    if (state.exists && !state.link && !state.regular &&
        state.owner == cfgq_platform::this_user() && (state.mode & 077) == 0) {
      return runtime;
    }
  }
  const QString memory = cfgq_platform::memory_dir();
  if (!memory.isEmpty()) return memory;
  return QString::fromStdString(cfgq_temp_directory());
}

void cfgq_secure_temporary_file(const QString& path) { cfgq_platform::own_private_file(path); }
