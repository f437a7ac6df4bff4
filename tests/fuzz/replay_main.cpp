// Runs the fuzz target once on every file named on the command line, or found in a directory
// named there, so that builds without libFuzzer keep the corpus exercised.
//   settings_fuzz_replay PATH...
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  QStringList files;
  for (int i = 1; i < argc; ++i) {
    const QString path = QString::fromLocal8Bit(argv[i]);
    if (QFileInfo(path).isDir()) {
      for (const QString& name : QDir(path).entryList(QDir::Files, QDir::Name)) {
        files.append(QDir(path).filePath(name));
      }
    } else {
      files.append(path);
    }
  }
  if (files.isEmpty()) {
    std::fprintf(stderr, "settings_fuzz_replay: no input files\n");
    return 2;
  }
  for (const QString& path : files) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
      std::fprintf(stderr, "settings_fuzz_replay: can't read %s\n", qPrintable(path));
      return 2;
    }
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                           static_cast<size_t>(bytes.size()));
  }
  std::printf("settings_fuzz_replay: %lld inputs\n", static_cast<long long>(files.size()));
  return 0;
}
