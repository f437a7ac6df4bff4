// A tiny program on the library for tests that must watch a whole process: it writes one value
// through a view, prints the path of the settings file the view used, and exits, so the caller
// can look at the file system after the library has been unloaded.
//
//   view_probe [VALUE]   writes General/Probe = VALUE (default "1") under the running version
#include <cstdio>

#include "cfgq.h"

int main(int argc, char** argv) {
  const char* value = argc > 1 ? argv[1] : "1";
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  view.set_value(QStringLiteral("Probe"), QString::fromUtf8(value));
  std::printf("%s\n", view.fileName().toUtf8().constData());
  return 0;
}
