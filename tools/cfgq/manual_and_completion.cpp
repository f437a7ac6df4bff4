// Two hidden entries of the tool, both made from the command table and the texts of --help:
// `cfgq --manpage` prints the manual page cfgq(1) (the build runs it), and `cfgq __complete`
// gives the shells' completion scripts their candidates.
#include <algorithm>

#include <QFileInfo>

#include "cfgq_tool.h"
#include "cli.h"
#include "settings_snapshot.h"

namespace cli {
namespace {

// One option as a command's --help lists it.
struct option_row {
  QStringList names;   // "-h", "--help"
  QString value_name;  // "KEY" for "--main-key <KEY>", empty for a switch
  QString description;
};

// The options block of a command's --help ("Options:", then "  -h, --help   Show ...", with
// wrapped descriptions on indented lines).
std::vector<option_row> options_of(const command& c, help_text help) {
  std::vector<option_row> rows;
  const QStringList lines = help(c).split(QLatin1Char('\n'));
  qsizetype at = lines.indexOf(QStringLiteral("Options:"));
  if (at < 0) return rows;
  for (++at; at < lines.size() && !lines.at(at).trimmed().isEmpty(); ++at) {
    const QString& line = lines.at(at);
    if (line.startsWith(QLatin1String("  -"))) {
      const qsizetype gap = line.indexOf(QLatin1String("  "), 2);
      const QString names = line.mid(2, gap < 0 ? -1 : gap - 2);
      option_row row;
      for (QString name : names.split(QStringLiteral(", "))) {
        const qsizetype value = name.indexOf(QLatin1String(" <"));
        if (value >= 0) {
          row.value_name = name.mid(value + 2).chopped(1);
          name.truncate(value);
        }
        row.names.append(name);
      }
      row.description = gap < 0 ? QString() : line.mid(gap).trimmed();
      rows.push_back(row);
    } else if (!rows.empty()) {
      rows.back().description += QLatin1Char(' ') + line.trimmed();
    }
  }
  return rows;
}

// ---- Manual page ------------------------------------------------------------------------

// Every exit status and what gives it.
const std::pair<int, const char*> exit_statuses[] = {
    {exit_ok, "Success. check: nothing needs attention; watch: ended by SIGINT or SIGTERM."},
    {exit_absent, "What was looked up is not there: get or unset of a value that is not set, show or keys "
                  "of a section that holds nothing, import SECTION that the export does not hold, "
                  "recover --merge of a copy without the main key's settings, getenv or unsetenv of a "
                  "variable neither store holds (getenv --login: the stores give a login none); check: "
                  "something needs attention."},
    {exit_usage, "Bad command line or input: an unknown command or option, a missing or extra argument, a "
                 "section name that names no section, export of a section or main key the file does not "
                 "know, JSON that is not valid or no export, a value too large to store, an argument that "
                 "is not UTF-8, migrate or reset without a terminal and without --yes."},
    {exit_failed, "A file could not be read or written: the settings file (also a write that would take it "
                  "past its 10,000,000-byte limit, which is refused), an export's output, an environment "
                  "store, standard output; no home directory; getenv --login without the generator."},
};

// Every variable the tool and the library read.
const std::pair<const char*, const char*> environment_variables[] = {
    {"HOME", "The profile directory, which holds the settings file (the password database's when unset)."},
    {"KORVEL_VERSION", "The running suite version (25.1 by default); it names the main key."},
    {"KORVEL_VERSIONS", "The installed versions, separated by ';', in the order migration prefers them."},
    {"KORVEL_CONFIG_ON", "Configuration switches that are on, separated by ','; separate_settings_for_64_bit "
                         "gives the main keys \"_64-Bit\"."},
    {"KORVEL_REGTEST", "1: a regression-test run; settings go to a temporary file removed at exit."},
    {"QT_QPA_PLATFORM", "minimal: a headless run, isolated as a regression-test run."},
    {"PBUILD_BUILD", "1: a build run, isolated as a regression-test run."},
    {"KORVEL_DEBUG", "Debug channels, CHANNEL or CHANNEL:LEVEL separated by ',' (CFGQ:2)."},
    {"KORVEL_QT_PROCESS", "1: the process runs the suite's Qt framework."},
    {"KORVEL_LOCK_WAIT_MS", "How long a write waits for another process's lock on the settings file "
                            "(10000)."},
    {"TMPDIR", "The temporary directory."},
    {"XDG_RUNTIME_DIR", "Where the library keeps its private files while it runs."},
    {"XDG_CONFIG_HOME", "Holds environment.d/90-korvel.conf, the user's environment store (~/.config "
                        "when unset)."},
    {"KORVEL_USER_ENV_FILE", "The user's environment store instead."},
    {"KORVEL_SYSTEM_ENV_FILE", "The machine's environment store instead of /etc/environment.d/80-korvel.conf."},
};

const std::pair<const char*, const char*> files[] = {
    {"~/korvel2.kreg", "The settings file ('cfgq path' names the one in use). Writers lock it through "
                       "korvel2.kreg.lock beside it; copies set aside beside it end in .large, .corrupt or "
                       ".format-error, and reset's copy in .reset ('cfgq recover' lists them)."},
    {"~/.config/environment.d/90-korvel.conf", "The user's environment store."},
    {"/etc/environment.d/80-korvel.conf", "The machine's environment store."},
};

const std::pair<const char*, const char*> examples[] = {
    {"cfgq get General Show_tips --default Yes", "One value, or Yes when it is not set:"},
    {"echo \"$HOME/projects\" | cfgq set Directories Last_project -", "A value from standard input:"},
    {"cfgq export -o settings.json && cfgq import settings.json", "Back up the settings, and restore them:"},
    {"cfgq show --flat | grep ^General/", "Every value as SECTION/KEY=VALUE, for grep and diff:"},
    {"cfgq --file ~/korvel2.kreg.large show", "Look at a copy set aside, without moving it:"},
    {"cfgq setenv PATH /opt/korvel/bin --append && cfgq getenv PATH --login",
     "Extend the login's PATH, then see what the next login gets:"},
};

// One line of text in roff: backslashes and minus signs escaped, no line taken for a request.
QString roff_line(const QString& line) {
  QString out = line;
  out.replace(QLatin1Char('\\'), QLatin1String("\\e")).replace(QLatin1Char('-'), QLatin1String("\\-"));
  if (out.startsWith(QLatin1Char('.')) || out.startsWith(QLatin1Char('\''))) out.prepend(QLatin1String("\\&"));
  return out;
}

// Help text as roff: lines run together into paragraphs, an empty line starts a new one, and
// indented lines (examples) stay as they are.
QString roff_text(const QString& text) {
  QString out;
  bool verbatim = false;
  for (const QString& line : text.split(QLatin1Char('\n'))) {
    const bool indented = line.startsWith(QLatin1String("  "));
    if (indented != verbatim) out += indented ? QStringLiteral(".RS\n.nf\n") : QStringLiteral(".fi\n.RE\n");
    verbatim = indented;
    out += line.trimmed().isEmpty() ? QStringLiteral(".PP\n") : roff_line(indented ? line.mid(2) : line) + QLatin1Char('\n');
  }
  if (verbatim) out += QStringLiteral(".fi\n.RE\n");
  return out;
}

QString quoted_heading(const QString& text) {
  return QLatin1Char('"') + roff_line(text).replace(QLatin1Char('"'), QLatin1String("\\(dq")) + QLatin1Char('"');
}

}  // namespace

QString manual_page(const std::vector<command>& commands, const QString& tool_help, help_text help,
                    const QString& version) {
  // The tool's --help: a usage paragraph, the description, "Commands:" with the list, then
  // notes, the last of which is the exit status.
  const QStringList paragraphs = tool_help.trimmed().split(QStringLiteral("\n\n"));
  QStringList description, notes;
  QString exit_status;
  bool after_commands = false;
  for (qsizetype i = 1; i < paragraphs.size(); ++i) {
    const QString& paragraph = paragraphs.at(i);
    if (paragraph.startsWith(QLatin1String("Commands:"))) {
      after_commands = true;
    } else if (paragraph.startsWith(QLatin1String("Exit status:"))) {
      exit_status = paragraph.mid(qsizetype(sizeof("Exit status:")) - 1).trimmed();
    } else {
      (after_commands ? notes : description).append(paragraph);
    }
  }
  QString page = QStringLiteral(
                     ".TH CFGQ 1 \"\" \"cfgq %1\" \"User Commands\"\n"
                     ".SH NAME\ncfgq \\- look at and repair the Korvel suite's user settings\n"
                     ".SH SYNOPSIS\n.B cfgq\n.I COMMAND\n[\\fIoptions\\fR] [\\fIarguments\\fR]\n.br\n"
                     ".B cfgq\n\\-\\-version | \\-\\-help | help \\fICOMMAND\\fR\n"
                     ".SH DESCRIPTION\n")
                     .arg(version);
  page += roff_text(description.join(QStringLiteral("\n\n")));
  if (!notes.isEmpty()) page += QStringLiteral(".PP\n") + roff_text(notes.join(QStringLiteral("\n\n")));
  page += QStringLiteral(".SH COMMANDS\n");
  for (const command& c : commands) {
    page += QStringLiteral(".SS %1\n")
                .arg(quoted_heading(QStringLiteral("cfgq %1 %2").arg(QLatin1String(c.name), QLatin1String(c.arguments)).trimmed()));
    page += roff_text(QString::fromUtf8(c.details));
    for (const option_row& row : options_of(c, help)) {
      if (row.names.contains(QStringLiteral("--help"))) continue;  // every command has it
      QString names = roff_line(row.names.join(QStringLiteral(", ")));
      if (!row.value_name.isEmpty()) names += QStringLiteral(" \\fI%1\\fR").arg(roff_line(row.value_name));
      page += QStringLiteral(".TP\n\\fB%1\n%2\n").arg(names, roff_line(row.description));
    }
  }
  page += QStringLiteral(".SH EXIT STATUS\n") + roff_text(exit_status);
  for (const auto& [status, meaning] : exit_statuses) {
    page += QStringLiteral(".TP\n.B %1\n%2\n").arg(status).arg(roff_line(QLatin1String(meaning)));
  }
  page += QStringLiteral(".SH ENVIRONMENT\n");
  for (const auto& [name, meaning] : environment_variables) {
    page += QStringLiteral(".TP\n.B %1\n%2\n").arg(roff_line(QLatin1String(name)), roff_line(QLatin1String(meaning)));
  }
  page += QStringLiteral(".SH FILES\n");
  for (const auto& [name, meaning] : files) {
    page += QStringLiteral(".TP\n.I %1\n%2\n").arg(roff_line(QLatin1String(name)), roff_line(QLatin1String(meaning)));
  }
  page += QStringLiteral(".SH EXAMPLES\n");
  for (const auto& [line, meaning] : examples) {
    page += QStringLiteral(".PP\n%1\n.RS\n.nf\n%2\n.fi\n.RE\n").arg(roff_line(QLatin1String(meaning)), roff_line(QLatin1String(line)));
  }
  page += QStringLiteral(
      ".SH SHELL COMPLETION\n"
      "The installed scripts for bash and zsh complete commands, options, section names (the\n"
      "section table's and the file's), the keys of a section of the running version (or of\n"
      "\\-\\-main\\-key), and the main keys the file holds.\n"
      ".SH SEE ALSO\n"
      ".BR environment.d (5),\n"
      ".BR systemd.environment\\-generator (7),\n"
      ".BR man (1)\n");
  return page;
}

// ---- Completion -------------------------------------------------------------------------

namespace {

// The positional placeholders of a usage text: "SECTION KEY [--json]" gives SECTION, KEY;
// "NAME VALUE [--separator S]" gives NAME, VALUE (an option's own value is not one).
QStringList placeholders(const char* arguments) {
  QStringList names;
  bool in_option = false;
  for (QString word : QString::fromUtf8(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    const bool closes = word.endsWith(QLatin1Char(']'));
    word.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    if (word.startsWith(QLatin1Char('-'))) in_option = !closes;
    else if (!in_option) names.append(word);
    else if (closes) in_option = false;
  }
  return names;
}

QStringList section_names(const QStringList& in_file) {
  QStringList names = in_file;
  for (int key = CFGQ_REGISTRY_KEY::GENERAL; key < CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++key) {
    const auto& row = section_row(key);
    const QString group = QString::fromUtf8(row.sub_key_name);
    if (group.isEmpty()) continue;
    names << group << QString::fromUtf8(row.enum_name);
  }
  return names;
}

}  // namespace

int complete(const std::vector<command>& commands, const QStringList& given, help_text help) {
  QStringList words = given;
  if (words.isEmpty()) words.append(QString());
  const QString current = words.takeLast();
  QStringList candidates;
  const auto done = [&](QStringList found) {
    found.removeDuplicates();
    found.sort();
    for (const QString& candidate : found) {
      if (candidate.startsWith(current)) print(candidate + QLatin1Char('\n'));
    }
    return exit_ok;
  };
  // Options before the command word belong to the tool; --file takes a file name.
  QString path = cfgq_tool_settings_file();
  while (!words.isEmpty() && words.first().startsWith(QLatin1Char('-'))) {
    if (words.takeFirst() != QLatin1String("--file")) continue;
    if (words.isEmpty()) return exit_absent;  // the file name: the shell completes it
    path = words.takeFirst();
  }
  if (words.isEmpty()) {
    if (current.startsWith(QLatin1Char('-'))) {
      return done({QStringLiteral("--help"), QStringLiteral("--version"), QStringLiteral("--file"), QStringLiteral("--write")});
    }
    candidates.append(QStringLiteral("help"));
    for (const command& c : commands) candidates.append(QLatin1String(c.name));
    return done(candidates);
  }
  const QString word = words.takeFirst();
  if (word == QLatin1String("help")) {
    if (words.isEmpty()) {
      for (const command& c : commands) candidates.append(QLatin1String(c.name));
    }
    return done(candidates);
  }
  const auto found = std::find_if(commands.begin(), commands.end(),
                                  [&](const command& c) { return word == QLatin1String(c.name); });
  if (found == commands.end()) return done({});
  const std::vector<option_row> options = options_of(*found, help);
  const auto option_named = [&](const QString& name) -> const option_row* {
    for (const option_row& row : options) {
      if (row.names.contains(name)) return &row;
    }
    return nullptr;
  };

  // The positional arguments so far, and what the option before the current word wants.
  QStringList positional;
  QString main_key = cfgq_tool_main_key();
  const option_row* wants_value = nullptr;
  bool options_end = false;
  for (const QString& w : words) {
    if (wants_value != nullptr) {
      if (wants_value->names.contains(QStringLiteral("--main-key"))) main_key = w;
      wants_value = nullptr;
    } else if (!options_end && w == QLatin1String("--")) {
      options_end = true;
    } else if (!options_end && w.startsWith(QLatin1Char('-')) && w.size() > 1) {
      const option_row* row = option_named(w.section(QLatin1Char('='), 0, 0));
      if (row != nullptr && !row->value_name.isEmpty() && !w.contains(QLatin1Char('='))) wants_value = row;
    } else {
      positional.append(w);
    }
  }
  if (wants_value != nullptr) {
    if (wants_value->names.contains(QStringLiteral("--main-key"))) {
      return done(read_settings(path, QString()).main_keys);
    }
    // A file name: the shell completes it (exit status 1 asks for that).
    return wants_value->value_name.contains(QLatin1String("FILE")) ? exit_absent : done({});
  }
  if (!options_end && current.startsWith(QLatin1Char('-'))) {
    for (const option_row& row : options) {
      for (const QString& name : row.names) {
        if (name.startsWith(QLatin1String("--"))) candidates.append(name);
      }
    }
    return done(candidates);
  }
  const QString placeholder = placeholders(found->arguments).value(positional.size());
  if (placeholder == QLatin1String("FILE")) return exit_absent;
  if (placeholder == QLatin1String("SECTION")) {
    QStringList in_file;
    for (const QString& key : read_settings(path, main_key).values.keys()) {
      if (key.contains(QLatin1Char('/'))) in_file.append(key.section(QLatin1Char('/'), 0, 0));
    }
    return done(section_names(in_file));
  }
  if (placeholder == QLatin1String("KEY")) {
    const qsizetype at = placeholders(found->arguments).indexOf(QStringLiteral("SECTION"));
    QString why;
    const std::optional<QString> section = resolve_section(positional.value(at), &why);
    if (at < 0 || !section) return done({});
    return done(read_settings(path, main_key + QLatin1Char('/') + *section).values.keys());
  }
  return done({});
}

}  // namespace cli
