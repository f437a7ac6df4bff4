// The settings view's operations beside the same work done with raw QSettings, in one run.
//
// Names read OPERATION/SIDE/SIZE. SIDE is "ours" (the library) or "raw" (QSettings alone);
// "raw_held" is raw work while another settings object holds the file, as a long-lived object
// of an application would. Every side works on its own copy of each file, so that nothing one
// side keeps in memory helps the other.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <benchmark/benchmark.h>

#include "bench_files.h"
#include "cfgq.h"

namespace {

using cfgq_bench::point_views_at;
using cfgq_bench::write_file;

struct file_size {
  const char* label;
  qint64 bytes;
};
// "10MB" stays below the 10,000,000 bytes above which a view sets the file aside.
const std::vector<file_size> file_sizes = {
    {"10KB", 10'000}, {"1MB", 1'000'000}, {"10MB", 9'900'000}};
const std::vector<int> group_sizes = {10, 1'000, 10'000};

QString root_dir;

QString home_for(const std::string& side, const std::string& what) {
  return root_dir + "/" + QString::fromStdString(side + "/" + what);
}
QString file_in(const QString& home) { return home + "/korvel2.kreg"; }

// A first view that reads: Qt parses a section when it is first read, not when the file is
// opened, and that parse belongs to neither side's steady state.
void warm_up_view(const QString& home) {
  point_views_at(home);
  CFGQ_REGISTRY_KEY first(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  QVariant value;
  first.get_value(QStringLiteral("Show_tips"), &value);
}

// Reading view: open, read one value, close.
void ours_reading_view(benchmark::State& state, const QString& home) {
  warm_up_view(home);
  for (auto _ : state) {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
    QVariant value;
    benchmark::DoNotOptimize(view.get_value(QStringLiteral("Show_tips"), &value));
  }
}

void raw_open_value_close(const QString& path) {
  QSettings settings(path, QSettings::IniFormat);
  settings.beginGroup(QStringLiteral("25.1_pro"));
  settings.beginGroup(QStringLiteral("General"));
  QVariant value = settings.value(QStringLiteral("Show_tips"));
  benchmark::DoNotOptimize(value);
}

void raw_reading_view(benchmark::State& state, const QString& path, bool held) {
  std::unique_ptr<QSettings> holder;
  if (held) {
    holder = std::make_unique<QSettings>(path, QSettings::IniFormat);
    holder->value(QStringLiteral("25.1_pro/General/Show_tips"));
  }
  for (auto _ : state) raw_open_value_close(path);
}

// One value read and written in a group of N keys, the view (or object) open throughout.
const QString middle_key(int keys) {
  return QStringLiteral("Key_%1").arg(keys / 2, 6, 10, QLatin1Char('0'));
}

void ours_get_value(benchmark::State& state, const QString& home, int keys) {
  point_views_at(home);
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  const QString name = middle_key(keys);
  view.value(name);  // parses the section outside the timing
  for (auto _ : state) {
    QVariant value;
    benchmark::DoNotOptimize(view.get_value(name, &value));
  }
}

void raw_value(benchmark::State& state, const QString& path, int keys) {
  QSettings settings(path, QSettings::IniFormat);
  settings.beginGroup(QStringLiteral("25.1_pro/General"));
  const QString name = middle_key(keys);
  settings.value(name);
  for (auto _ : state) {
    QVariant value = settings.value(name);
    benchmark::DoNotOptimize(value);
  }
}

const QVariant written_values[2] = {QStringLiteral("Value one"), QStringLiteral("Value two")};

void ours_set_value(benchmark::State& state, const QString& home, int keys) {
  point_views_at(home);
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  const QString name = middle_key(keys);
  view.value(name);  // parses the section outside the timing
  int i = 0;
  for (auto _ : state) view.set_value(name, written_values[++i & 1]);
}

void raw_set_value(benchmark::State& state, const QString& path, int keys) {
  QSettings settings(path, QSettings::IniFormat);
  settings.beginGroup(QStringLiteral("25.1_pro/General"));
  const QString name = middle_key(keys);
  settings.value(name);
  int i = 0;
  for (auto _ : state) settings.setValue(name, written_values[++i & 1]);
}

// Persisted write: open, write one value, close (which writes the file).
void ours_persisted_write(benchmark::State& state, const QString& home) {
  warm_up_view(home);
  int i = 0;
  for (auto _ : state) {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
    view.set_value(QStringLiteral("Counter"), written_values[++i & 1]);
  }
}

void raw_persisted_write(benchmark::State& state, const QString& path) {
  int i = 0;
  for (auto _ : state) {
    QSettings settings(path, QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("25.1_pro/General"));
    settings.setValue(QStringLiteral("Counter"), written_values[++i & 1]);
  }
}

// Migration: a main key of ~20,000 keys in 70 sections (some nested) copied onto the next
// version's main key, and the file written out. The file is put back before every round.
constexpr int migration_keys = 20'000;
QByteArray migration_text;

int raw_copy(QSettings& settings, const QString& source, const QString& destination) {
  settings.beginGroup(source);
  const QStringList keys = settings.childKeys();
  const QStringList groups = settings.childGroups();
  QList<QVariant> values;
  values.reserve(keys.size());
  for (const QString& key : keys) values.append(settings.value(key));
  settings.endGroup();
  settings.beginGroup(destination);
  for (qsizetype i = 0; i < keys.size(); ++i) settings.setValue(keys[i], values[i]);
  settings.endGroup();
  int count = static_cast<int>(keys.size());
  for (const QString& group : groups) {
    count += raw_copy(settings, source + "/" + group, destination + "/" + group);
  }
  return count;
}

void ours_migration(benchmark::State& state, const QString& home) {
  point_views_at(home);
  int copied = 0;
  for (auto _ : state) {
    state.PauseTiming();
    write_file(file_in(home), migration_text);
    state.ResumeTiming();
    CFGQ_REGISTRY_KEY root(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
    copied = root.copy(QStringLiteral("24.3_pro"), QStringLiteral("25.1_pro"));
  }
  state.SetLabel(std::to_string(copied) + " keys");
}

void raw_migration(benchmark::State& state, const QString& path) {
  int copied = 0;
  for (auto _ : state) {
    state.PauseTiming();
    write_file(path, migration_text);
    state.ResumeTiming();
    QSettings settings(path, QSettings::IniFormat);
    copied = raw_copy(settings, QStringLiteral("24.3_pro"), QStringLiteral("25.1_pro"));
  }
  state.SetLabel(std::to_string(copied) + " keys");
}

void add(const std::string& name, std::function<void(benchmark::State&)> body, bool heavy) {
  benchmark::RegisterBenchmark(name.c_str(), body)
      ->Unit(heavy ? benchmark::kMillisecond : benchmark::kMicrosecond);
}

bool make_files() {
  for (const file_size& size : file_sizes) {
    const QByteArray text = cfgq_bench::settings_file_text(size.bytes);
    for (const char* side : {"ours", "raw", "raw_held"}) {
      if (!write_file(file_in(home_for(side, std::string("file_") + size.label)), text)) return false;
      if (!write_file(file_in(home_for(side, std::string("write_") + size.label)), text)) return false;
    }
  }
  for (int keys : group_sizes) {
    const QByteArray text = cfgq_bench::group_file_text(keys);
    for (const char* side : {"ours", "raw"}) {
      for (const char* what : {"get_", "set_"}) {
        if (!write_file(file_in(home_for(side, what + std::to_string(keys))), text)) return false;
      }
    }
  }
  migration_text = cfgq_bench::settings_file_text(1LL << 40, migration_keys, "24.3_pro");
  return true;
}

void register_all() {
  for (const file_size& size : file_sizes) {
    const std::string what = std::string("file_") + size.label;
    const bool heavy = size.bytes >= 1'000'000;
    add(std::string("reading_view/ours/") + size.label,
        [h = home_for("ours", what)](benchmark::State& s) { ours_reading_view(s, h); }, false);
    add(std::string("reading_view/raw_held/") + size.label,
        [p = file_in(home_for("raw_held", what))](benchmark::State& s) {
          raw_reading_view(s, p, true);
        },
        false);
    add(std::string("reading_view/raw/") + size.label,
        [p = file_in(home_for("raw", what))](benchmark::State& s) { raw_reading_view(s, p, false); },
        heavy);
  }
  for (int keys : group_sizes) {
    const std::string n = std::to_string(keys);
    add("get_value/ours/" + n,
        [h = home_for("ours", "get_" + n), keys](benchmark::State& s) { ours_get_value(s, h, keys); },
        false);
    add("get_value/raw/" + n,
        [p = file_in(home_for("raw", "get_" + n)), keys](benchmark::State& s) {
          raw_value(s, p, keys);
        },
        false);
    add("set_value/ours/" + n,
        [h = home_for("ours", "set_" + n), keys](benchmark::State& s) { ours_set_value(s, h, keys); },
        false);
    add("set_value/raw/" + n,
        [p = file_in(home_for("raw", "set_" + n)), keys](benchmark::State& s) {
          raw_set_value(s, p, keys);
        },
        false);
  }
  for (const file_size& size : file_sizes) {
    const std::string what = std::string("write_") + size.label;
    const bool heavy = size.bytes >= 1'000'000;
    add(std::string("persisted_write/ours/") + size.label,
        [h = home_for("ours", what)](benchmark::State& s) { ours_persisted_write(s, h); }, heavy);
    add(std::string("persisted_write/raw/") + size.label,
        [p = file_in(home_for("raw", what))](benchmark::State& s) { raw_persisted_write(s, p); },
        heavy);
  }
  add("migration/ours/20k",
      [h = home_for("ours", "migration")](benchmark::State& s) { ours_migration(s, h); }, true);
  add("migration/raw/20k",
      [p = file_in(home_for("raw", "migration"))](benchmark::State& s) { raw_migration(s, p); },
      true);
}

}  // namespace

int main(int argc, char** argv) {
  QTemporaryDir dir;
  if (!dir.isValid()) return 1;
  root_dir = dir.path();
  // The library's temporary file goes here too, never into the user's /tmp.
  setenv("TMPDIR", root_dir.toLocal8Bit().constData(), 1);
  if (!make_files()) return 1;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  register_all();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
