// cfgq: look at and repair a user's settings file from the command line.
#include <cstdio>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

#include "cfgq.h"

namespace {

QTextStream& out() {
  static QTextStream stream(stdout);
  return stream;
}

int usage_error(const QString& message) {
  QTextStream err(stderr);
  err << "cfgq: " << message << "\n";
  return 2;
}

void print_tree(CFGQ_REGISTRY_KEY& view, int depth) {
  const QString indent(depth * 2, QLatin1Char(' '));
  for (const QString& key : view.childKeys()) {
    out() << indent << key << " = " << view.value(key).toString() << "\n";
  }
  for (const QString& group : view.childGroups()) {
    out() << indent << "[" << group << "]\n";
    view.beginGroup(group);
    print_tree(view, depth + 1);
    view.endGroup();
  }
}

int show() {
  CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::NO_SUB_KEY, nullptr, nullptr);
  if (view.allKeys().isEmpty()) {
    out() << "No settings are stored yet for " << view.group() << ".\n"
          << "Settings file: " << view.fileName()
          << (QFileInfo::exists(view.fileName()) ? "" : " (not created yet)") << "\n";
    return 0;
  }
  out() << "[" << view.group() << "]\n";
  print_tree(view, 1);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("cfgq"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Look at and repair Korvel user settings."));
  parser.addHelpOption();
  parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("path | show"));
  parser.process(app);
  const QStringList args = parser.positionalArguments();
  const QString command = args.isEmpty() ? QStringLiteral("show") : args.first();
  if (command == QLatin1String("path")) {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
    out() << view.fileName() << "\n";
    return 0;
  }
  if (command == QLatin1String("show")) return show();
  return usage_error(QStringLiteral("unknown command '%1'").arg(command));
}
