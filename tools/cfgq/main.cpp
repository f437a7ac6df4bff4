// cfgq: look at and repair a user's Korvel settings file from the command line.
// This file parses the command word and its options and hands over to the command's body.
#include <algorithm>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QStringDecoder>

#include "cli.h"
#include "ver.h"

namespace {

using cli::command;

const char* const tool_description =
    "Look at and repair the Korvel suite's user settings without starting a graphical tool.\n"
    "Works on the same settings file as the suite's tools (see 'cfgq path').";

const char* const exit_status_help =
    "Exit status: 0 success; 1 the value, section or file looked up is absent;\n"
    "2 usage error or bad input (unknown command, missing argument, bad JSON);\n"
    "3 a file could not be read or written (or a write would take the settings file past\n"
    "its size limit). Errors are one line on standard error:\n"
    "\"cfgq: <what failed>: <why>\". Put -- before an argument that begins with '-'.";

std::vector<command> all_commands() {
  std::vector<command> commands;
  for (auto group : {cli::store_commands, cli::backup_commands, cli::recover_commands,
                     cli::version_commands, cli::watch_commands, cli::check_commands,
                     cli::env_commands}) {
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
  QString text = QStringLiteral("Usage: cfgq [--file FILE [--write]] COMMAND [options] [arguments]\n       cfgq "
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
              "work\non another version's or edition's settings. 'cfgq help export' describes the JSON\nformat of export and import.\n\n"
              "--file FILE (before the command) works on FILE instead of the user's settings file\n"
              "(a set-aside copy, a colleague's file, a backup): it is read through a private copy,\n"
              "never set aside, renamed or migrated, and only read unless --write is given too; with\n"
              "--write, set, unset, clear, import and recover --merge write it back whole (a file over\n"
              "the 10,000,000-byte limit is refused). migrate, reset and the environment commands\n"
              "don't take it.\n\n%1\n")
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
  const QString cause = cli::isolation_cause();
  const QString temporary =
      cause.isEmpty() ? QString() : QStringLiteral(" (temporary: %1 isolates this run)").arg(cause);
  return QStringLiteral("cfgq %1\nsuite version: %2\nmain key: %3\nsettings file: %4%5\n")
      .arg(QCoreApplication::applicationVersion(), QString::fromStdString(ver_get_version()),
           cli::running_main_key(), cli::settings_file_path(), temporary);
}

// " (did you mean 'unset'?)" for a mistyped command word; empty when nothing is close.
QString command_hint(const std::vector<command>& commands, const QString& word) {
  if (word == QLatin1String("remove") || word == QLatin1String("delete") ||
      word == QLatin1String("rm") || word == QLatin1String("del")) {
    return QStringLiteral(" (did you mean unset?)");
  }
  QStringList names;
  for (const command& c : commands) names.append(QLatin1String(c.name));
  const QString nearest = cli::nearest_name(word, names);
  return nearest.isEmpty() ? QString() : QStringLiteral(" (did you mean %1?)").arg(nearest);
}

// After "Unknown option": the first word with one dash that the command doesn't take as an
// option, which may be a value meant as an argument ("-5", "-x"); empty otherwise. A word with
// two dashes is taken for a mistyped option.
QString value_like_option(const QCommandLineParser& parser, const QStringList& words) {
  for (const QString& word : words) {
    if (word == QLatin1String("--")) break;
    if (!word.startsWith(QLatin1Char('-')) || word.startsWith(QLatin1String("--")) || word.size() < 2) continue;
    if (parser.unknownOptionNames().contains(word.mid(1).section(QLatin1Char('='), 0, 0))) return word;
  }
  return QString();
}

// The first command-line argument that is not valid UTF-8 (Qt would turn its bytes into U+FFFD):
// its position, or 0 when every argument is.
int first_undecodable_argument(int argc, char** argv) {
#ifdef _WIN32
  // Windows hands the arguments over as UTF-16 (which Qt reads); argv holds them in the
  // system's 8-bit code page, which is no test of them.
  (void)argc;
  (void)argv;
  return 0;
#endif
  for (int i = 1; i < argc; ++i) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder.decode(QByteArrayView(argv[i], static_cast<qsizetype>(std::strlen(argv[i]))));
    if (decoder.hasError()) return i;
  }
  return 0;
}

// Under --file FILE: exit_ok when `command` may run on FILE; else the error's status. Commands
// that write need --write; migrate and reset belong to the user's own file, the environment
// commands to no settings file.
int other_file_refusal(const QString& command, const QStringList& words, bool write) {
  static const QStringList own_file_only = {QStringLiteral("migrate"), QStringLiteral("reset"), QStringLiteral("setenv"),
                                            QStringLiteral("getenv"), QStringLiteral("unsetenv"), QStringLiteral("env")};
  static const QStringList writers = {QStringLiteral("set"), QStringLiteral("unset"), QStringLiteral("clear"),
                                      QStringLiteral("import")};
  if (own_file_only.contains(command)) {
    return cli::fail(command, QStringLiteral("not with --file (it works on the user's own settings)"), cli::exit_usage);
  }
  const bool merge = command == QLatin1String("recover") &&
                     std::any_of(words.begin(), words.end(), [](const QString& w) { return w.startsWith(QLatin1String("--merge")); });
  if (!write && (writers.contains(command) || merge)) {
    return cli::fail(command, QStringLiteral("--file opens the file read-only; add --write to change it"), cli::exit_usage);
  }
  return cli::exit_ok;
}

int run_command(const command& c, const QStringList& words) {
  QCommandLineParser parser;
  configure_parser(parser, c);
  const QString name = QLatin1String(c.name);
  QStringList line = words;
  line.prepend(QStringLiteral("cfgq"));
  if (!parser.parse(line)) {
    const QString value = value_like_option(parser, words);
    QString hint = QStringLiteral("see 'cfgq help %1'").arg(name);
    if (!value.isEmpty()) {
      hint = QStringLiteral("if '%1' is a value, put -- before the arguments").arg(value);
      // The corrected line, when the value is the only word that looks like an option.
      const auto option_like = [](const QString& word) { return word.startsWith(QLatin1Char('-')); };
      if (std::count_if(words.begin(), words.end(), option_like) == 1) {
        hint += QStringLiteral(": cfgq %1 -- %2").arg(name, words.join(QLatin1Char(' ')));
      }
    }
    return cli::fail(name, QStringLiteral("%1 (%2)").arg(parser.errorText(), hint), cli::exit_usage);
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
  // Every command but these reads or writes settings.
  std::optional<cli::settings_run> settings;
  const bool env_command = name.endsWith(QLatin1String("env"));
  if (!env_command && cli::settings_file_path().isEmpty()) {
    // Never a settings file in whatever the working directory happens to be.
    return cli::fail(name,
                     QStringLiteral("no profile directory: HOME is not set and the password "
                                    "database names no home directory for this user"),
                     cli::exit_failed);
  }
  if (name != QLatin1String("path") && !env_command && !cli::other_file_in_use()) settings.emplace();
  const int status = c.run(cli::invocation{name, parser, args});
  // A write the command did not check itself (a view written when it went) still counts.
  const int unchecked = cli::check_writes(name);
  return status == cli::exit_ok ? unchecked : status;
}

int run_tool(QString* what) {
  QCoreApplication::setApplicationName(QStringLiteral("cfgq"));
  QCoreApplication::setApplicationVersion(QStringLiteral(CFGQ_TOOL_VERSION));
  const std::vector<command> commands = all_commands();

  // Options before the command word belong to the tool; everything from the command word on
  // belongs to the command.
  QStringList words = QCoreApplication::arguments().mid(1);
  if (words.value(0) == QLatin1String("__complete")) return cli::complete(commands, words.mid(1), command_help);
  bool help = false;
  QString file;
  bool write = false;
  while (!words.isEmpty() && words.first().startsWith(QLatin1Char('-'))) {
    const QString option = words.takeFirst();
    if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
      help = true;
    } else if (option == QLatin1String("--file") || option.startsWith(QLatin1String("--file="))) {
      file = option.size() > 6 ? option.mid(7) : words.isEmpty() ? QString() : words.takeFirst();
      if (file.isEmpty()) return cli::fail(QStringLiteral("--file"), QStringLiteral("needs a FILE"), cli::exit_usage);
    } else if (option == QLatin1String("--write")) {
      write = true;
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
  *what = word;
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
      return cli::fail(words.first(),
                       QStringLiteral("unknown command%1 (see 'cfgq --help')")
                           .arg(command_hint(commands, words.first())),
                       cli::exit_usage);
    }
    cli::print(command_help(*c));
    return cli::exit_ok;
  }
  const command* c = find_command(commands, word);
  if (c == nullptr) {
    return cli::fail(word,
                     QStringLiteral("unknown command%1 (see 'cfgq --help')").arg(command_hint(commands, word)),
                     cli::exit_usage);
  }
  if (write && file.isEmpty()) {
    return cli::fail(QStringLiteral("--write"), QStringLiteral("only with --file FILE"), cli::exit_usage);
  }
  if (!file.isEmpty()) {
    if (const int refused = other_file_refusal(word, words, write)) return refused;
    QString why;
    int status = cli::exit_ok;
    if (!cli::use_other_file(file, write, &why, &status)) return cli::fail(QStringLiteral("--file %1").arg(file), why, status);
  }
  const int status = run_command(*c, words);
  return status == cli::exit_ok ? cli::finish_other_file(word) : status;
}

}  // namespace

int main(int argc, char** argv) {
#ifdef _WIN32
  // What the tool reads and prints is data (exports, -z listings, values for scripts): every
  // byte as it is, no "\r\n" for "\n".
  for (FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
#endif
  QCoreApplication app(argc, argv);
  QString what = QStringLiteral("cfgq");
  int status = cli::exit_usage;
  if (const int bad = first_undecodable_argument(argc, argv)) {
    status = cli::fail(QStringLiteral("argument %1").arg(bad),
                       QStringLiteral("not valid UTF-8 (settings hold Unicode text; convert it "
                                      "first, e.g. with iconv)"),
                       cli::exit_usage);
  } else {
    status = run_tool(&what);
  }
  return cli::finish_output(what, status);
}
