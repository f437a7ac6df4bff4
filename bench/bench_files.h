// Settings files of realistic shape for the benchmarks, and the environment that points the
// library's views at them.
#pragma once

#include <cstdlib>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace cfgq_bench {

// One main key as Qt writes it (a single INI section, groups joined by "\\" in the keys): the
// group General with Show_tips=Yes, then "Key_NNNNNN=..." lines spread round-robin over 70
// groups, every third with a nested group, until the text reaches `bytes` or holds `keys` keys.
inline QByteArray settings_file_text(qint64 bytes, int keys = 1 << 30,
                                     const char* main_key = "25.1_pro") {
  constexpr int groups = 70;
  QByteArray out = QByteArray("[") + main_key + "]\nGeneral\\Show_tips=Yes\n";
  for (int line = 0; out.size() < bytes && line < keys; ++line) {
    const int group = line % groups;
    out += "Section_" + QByteArray::number(group) + (group % 3 == 0 ? "\\Nested" : "") +
           "\\Key_" + QByteArray::number(line).rightJustified(6, '0') + "=Value text " +
           QByteArray::number(line * 7919 % 100000) + " with a few words\n";
  }
  return out;
}

// The group "25.1_pro/General" with exactly `keys` keys Key_000000 .. .
inline QByteArray group_file_text(int keys) {
  QByteArray out = "[25.1_pro]\n";
  for (int i = 0; i < keys; ++i) {
    out += "General\\Key_" + QByteArray::number(i).rightJustified(6, '0') + "=Value " +
           QByteArray::number(i) + "\n";
  }
  return out;
}

inline bool write_file(const QString& path, const QByteArray& bytes) {
  QDir().mkpath(QFileInfo(path).absolutePath());
  QFile file(path);
  return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// Views use <home>/korvel2.kreg of version 25.1, never a temporary file.
inline void point_views_at(const QString& home) {
  setenv("HOME", home.toLocal8Bit().constData(), 1);
  setenv("KORVEL_VERSION", "25.1", 1);
  for (const char* name : {"KORVEL_REGTEST", "QT_QPA_PLATFORM", "PBUILD_BUILD", "KORVEL_CONFIG_ON",
                           "KORVEL_DEBUG"}) {
    unsetenv(name);
  }
}

}  // namespace cfgq_bench
