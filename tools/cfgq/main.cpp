// cfgq: look at and repair a user's Korvel settings file from the command line.
// This file parses the command word and its options and hands over to the command's body.
#include <cstdio>
#include <vector>

#include <QCommandLineParser>
#include <QCoreApplication>

#include "cli.h"

namespace {

using cli::command;

const char* const tool_description =
    "Look at and repair the Korvel suite's user settings without starting a graphical tool.\n"
    "Works on the same settings file as the suite's tools (see 'cfgq path').";

const char* const exit_status_help =
    "Exit status: 0 success; 1 the value, section or file looked up is absent;\n"
    "2 usage error or bad input (unknown command, missing argument, bad JSON);\n"
    "3 a file could not be read or written. Errors are one line on standard error:\n"
    "\"cfgq: <what failed>: <why>\". Put -- before an argument that begins with '-'.";

std::vector<command> all_commands() {
  std::vector<command> commands;
  for (auto group : {cli::store_commands, cli::backup_commands, cli::recover_commands,
                     cli::version_commands, cli::watch_commands, cli::check_commands}) {
    for (const command& c : group()) commands.push_back(c);
  }
  return commands;
}

const command* find_command(const std::vector<command>& commands, const QString& name) {
  for (const command& c : commands) {
    if (name == QLatin1String(c.name)) return &c;
  }
  return nullptr;
}

QString tool_help(const std::vector<command>& commands) {
  QString text = QStringLiteral("Usage: cfgq COMMAND [options] [arguments]\n       cfgq "
                                "--version | --help | help COMMAND\n\n%1\n\nCommands:\n")
                     .arg(QLatin1String(tool_description));
  for (const command& c : commands) {
    const QString synopsis =
        QStringLiteral("%1 %2").arg(QLatin1String(c.name), QLatin1String(c.arguments)).trimmed();
    text += QStringLiteral("  %1\n      %2\n").arg(synopsis, QLatin1String(c.summary));
  }
  text += QStringLiteral(
              "\nSECTION is a group name as the file holds it (General, \"Change Manager "
              "Window\",\nGeneral/Dialogs) or an enumerator of the section table (GENERAL, ECO); "
              "see\n'cfgq sections'. Commands that read or write values take --main-key KEY to "
              "work\non another version's or edition's settings. 'cfgq help export' describes the JSON\nformat of export and import.\n\n%1\n")
              .arg(QLatin1String(exit_status_help));
  return text;
}

void configure_parser(QCommandLineParser& parser, const command& c) {
  parser.setApplicationDescription(QString::fromUtf8(c.details));
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  parser.addOption({{QStringLiteral("h"), QStringLiteral("help")},
                    QStringLiteral("Show this help and exit.")});
  if (c.add_options != nullptr) c.add_options(parser);
}

QString command_help(const command& c) {
  QCommandLineParser parser;
  configure_parser(parser, c);
  QString text = parser.helpText();
  // helpText's usage line names the program's path only; it gets the command word and its
  // arguments instead.
  const QString usage =
      QStringLiteral("Usage: cfgq %1 [options] %2").arg(QLatin1String(c.name), QLatin1String(c.arguments));
  text.replace(0, text.indexOf(QLatin1Char('\n')), usage.trimmed());
  return text + QStringLiteral("\n%1\n").arg(QLatin1String(exit_status_help));
}

QString version_text() {
  const QString main_key = cli::running_main_key();
  // The main key is the version text, "_64-Bit" when 64-bit settings are kept apart, and "_pro".
  QString version = main_key;
  if (version.endsWith(QLatin1String("_pro"))) version.chop(4);
  if (version.endsWith(QLatin1String("_64-Bit"))) version.chop(7);
  return QStringLiteral("cfgq %1\nsuite version: %2\nmain key: %3\nsettings file: %4\n")
      .arg(QCoreApplication::applicationVersion(), version, main_key, cli::settings_file_path());
}

int run_command(const command& c, const QStringList& words) {
  QCommandLineParser parser;
  configure_parser(parser, c);
  const QString name = QLatin1String(c.name);
  QStringList line = words;
  line.prepend(QStringLiteral("cfgq"));
  if (!parser.parse(line)) {
    return cli::fail(name, parser.errorText() + QStringLiteral(" (see 'cfgq help %1')").arg(name),
                     cli::exit_usage);
  }
  if (parser.isSet(QStringLiteral("help"))) {
    cli::print(command_help(c));
    return cli::exit_ok;
  }
  // optionNames lists the options given, so commands without --main-key are not asked about it.
  if (parser.optionNames().contains(QStringLiteral("main-key"))) {
    const QString main_key = parser.value(QStringLiteral("main-key"));
    if (main_key.isEmpty() || main_key.contains(QLatin1Char('/'))) {
      return cli::fail(name, QStringLiteral("--main-key '%1' is not a main key (one group, as "
                                            "'cfgq show --all' lists them)")
                                 .arg(main_key),
                       cli::exit_usage);
    }
  }
  const QStringList args = parser.positionalArguments();
  const QString usage = QStringLiteral("usage: cfgq %1 %2").arg(name, QLatin1String(c.arguments)).trimmed();
  if (args.size() < c.min_args) {
    return cli::fail(name, QStringLiteral("missing argument (%1)").arg(usage), cli::exit_usage);
  }
  if (args.size() > c.max_args) {
    return cli::fail(name, QStringLiteral("unexpected argument '%1' (%2)").arg(args.at(c.max_args), usage),
                     cli::exit_usage);
  }
  return c.run(cli::invocation{name, parser, args});
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("cfgq"));
  QCoreApplication::setApplicationVersion(QStringLiteral(CFGQ_TOOL_VERSION));
  const std::vector<command> commands = all_commands();

  // Options before the command word belong to the tool; everything from the command word on
  // belongs to the command.
  QStringList words = QCoreApplication::arguments().mid(1);
  if (words.value(0) == QLatin1String("__complete")) return cli::complete(commands, words.mid(1), command_help);
  bool help = false;
  while (!words.isEmpty() && words.first().startsWith(QLatin1Char('-'))) {
    const QString option = words.takeFirst();
    if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
      help = true;
    } else if (option == QLatin1String("--version") || option == QLatin1String("-v")) {
      cli::print(version_text());
      return cli::exit_ok;
    } else if (option == QLatin1String("--manpage")) {
      cli::print(cli::manual_page(commands, tool_help(commands), command_help,
                                  QCoreApplication::applicationVersion()));
      return cli::exit_ok;
    } else {
      return cli::fail(option, QStringLiteral("unknown option (see 'cfgq --help')"), cli::exit_usage);
    }
  }
  if (help) {
    cli::print(tool_help(commands));
    return cli::exit_ok;
  }
  if (words.isEmpty()) {
    return cli::fail(QStringLiteral("command"), QStringLiteral("missing (see 'cfgq --help')"),
                     cli::exit_usage);
  }
  const QString word = words.takeFirst();
  if (word == QLatin1String("help")) {
    if (words.isEmpty()) {
      cli::print(tool_help(commands));
      return cli::exit_ok;
    }
    if (words.size() > 1) {
      return cli::fail(QStringLiteral("help"),
                       QStringLiteral("unexpected argument '%1' (usage: cfgq help [COMMAND])")
                           .arg(words.at(1)),
                       cli::exit_usage);
    }
    const command* c = find_command(commands, words.first());
    if (c == nullptr) {
      return cli::fail(words.first(), QStringLiteral("unknown command (see 'cfgq --help')"),
                       cli::exit_usage);
    }
    cli::print(command_help(*c));
    return cli::exit_ok;
  }
  const command* c = find_command(commands, word);
  if (c == nullptr) {
    return cli::fail(word, QStringLiteral("unknown command (see 'cfgq --help')"), cli::exit_usage);
  }
  return run_command(*c, words);
}
