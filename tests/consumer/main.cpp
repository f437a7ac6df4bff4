// Reads General/Show_tips of the running version through the installed library and prints it;
// exit status 1 when it is not set.
#include <cstdio>

#include <cfgq.h>

int main() {
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::GENERAL, nullptr, nullptr);
  QVariant value;
  if (!view.get_value(QStringLiteral("Show_tips"), &value)) return 1;
  std::printf("%s\n", value.toString().toUtf8().constData());
  return 0;
}
