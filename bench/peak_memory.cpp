// Peak memory of a process that opens a ~10 MB settings file and reads one value, through a view
// and through raw QSettings.
//
//   cfgq_peak_memory               runs both in child processes and prints their peak RSS
//   cfgq_peak_memory ours|raw DIR  the work alone, on DIR/korvel2.kreg
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include <QSettings>
#include <QTemporaryDir>
#include <QVariant>

#include "bench_files.h"
#include "cfgq.h"

namespace {

int read_one_value(const char* mode, const QString& home) {
  const QString path = home + "/korvel2.kreg";
  if (std::strcmp(mode, "ours") == 0) {
    cfgq_bench::point_views_at(home);
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
    QVariant value;
    return view.get_value(QStringLiteral("Show_tips"), &value) ? 0 : 2;
  }
  QSettings settings(path, QSettings::IniFormat);
  return settings.value(QStringLiteral("25.1_pro/General/Show_tips")).isValid() ? 0 : 2;
}

// Runs this program in `mode` on `home` and returns the child's peak resident set in KiB, or -1.
long child_peak_kib(const char* self, const char* mode, const QString& home) {
  const std::string dir = home.toStdString();
  const pid_t pid = fork();
  if (pid < 0) return -1;
  if (pid == 0) {
    execl(self, self, mode, dir.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(pid, &status, 0, &usage) != pid) return -1;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1;
  return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3) return read_one_value(argv[1], QString::fromLocal8Bit(argv[2]));
  QTemporaryDir dir;
  if (!dir.isValid()) return 1;
  setenv("TMPDIR", dir.path().toLocal8Bit().constData(), 1);
  const QByteArray text = cfgq_bench::settings_file_text(9'900'000);
  for (const char* side : {"ours", "raw"}) {
    if (!cfgq_bench::write_file(dir.path() + "/" + side + "/korvel2.kreg", text)) return 1;
  }
  const long ours = child_peak_kib("/proc/self/exe", "ours", dir.path() + "/ours");
  const long raw = child_peak_kib("/proc/self/exe", "raw", dir.path() + "/raw");
  if (ours < 0 || raw < 0) return 1;
  std::printf("peak_memory/ours/10MB,%ld\npeak_memory/raw/10MB,%ld\n", ours, raw);
  return 0;
}
