// Fuzz target: arbitrary bytes as the user's settings file, then what the suite's tools do with
// it: open views, list keys and groups, read values, copy a group, clear, write, reopen.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <QByteArray>
#include <QtGlobal>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <fcntl.h>
#include <sys/stat.h>

#include "cfgq.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;

// Qt answers from what it parsed last while the file keeps its size and modification time:
// every input gets a time of its own so that each one is really read.
constexpr long first_input_time_s = 1'000'000'000;
// Enough to reach every kind of entry without spending the run on one huge input.
constexpr int max_keys_visited = 200;

// A private HOME for the whole run; the profile file lies in it.
class fuzz_home {
 public:
  fuzz_home() {
    // Qt's warnings about odd keys would fill the log and slow every run down.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    setenv("HOME", m_dir.path().toLocal8Bit().constData(), 1);
    for (const char* isolation :
         {"KORVEL_REGTEST", "QT_QPA_PLATFORM", "PBUILD_BUILD", "KORVEL_DEBUG"}) {
      unsetenv(isolation);
    }
    setenv("KORVEL_VERSION", "25.1", 1);
  }
  QString settings_file() const { return m_dir.filePath(QStringLiteral("korvel2.kreg")); }

 private:
  QTemporaryDir m_dir;
};

void write_input(const QString& path, const uint8_t* data, size_t size, long input_time_s) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) std::abort();
  file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
  file.close();
  const struct timespec times[2] = {{input_time_s, 0}, {input_time_s, 0}};
  utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
}

void read_everything(Key& view) {
  int visited = 0;
  for (const QString& key : view.allKeys()) {
    if (++visited > max_keys_visited) break;
    const QVariant value = view.value(key);
    (void)value.toString();
    (void)view.contains(key);
  }
  for (const QString& key : view.childKeys()) {
    if (++visited > max_keys_visited) break;
    QVariant value;
    view.get_value(key, &value);
    view.is_yes(key);
    view.is_equal(key, QStringLiteral("Dark"), Qt::CaseInsensitive);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz_home home;
  static long input_time_s = first_input_time_s;
  write_input(home.settings_file(), data, size, ++input_time_s);
  {
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    read_everything(root);
    const QStringList groups = root.childGroups();
    for (const QString& group : groups.mid(0, 8)) {
      Key below(root, group);
      read_everything(below);
      for (const QString& subgroup : below.childGroups().mid(0, 4)) {
        const Key deeper(below, subgroup);
      }
    }
    if (!groups.isEmpty()) {
      root.copy(groups.first(), QStringLiteral("Fuzz_copy"));
      Key source(root, groups.first());
      source.clear_registry_key();
    }
    Key general(Key::GENERAL, nullptr, nullptr);
    read_everything(general);
    general.set_value(
        QStringLiteral("Fuzz_written"),
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
  }
  {
    // Reopen what the views wrote, then empty it.
    Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
    read_everything(root);
    root.clear();
  }
  return 0;
}
