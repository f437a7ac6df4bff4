// Commands for the persistent environment: setenv, getenv, unsetenv and env. The stores are
// files that the session manager reads at login (the registry on Windows); these commands say
// which file they touched and what a later login gets from it.
#include <optional>

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include "cfgq_tool.h"
#include "cli.h"

namespace cli {
namespace {

#ifdef _WIN32
const QString default_separator = QStringLiteral(";");
const char* const login_note =
    "Programs started from now on see the change; programs already running keep their "
    "environment.\n";
#else
const QString default_separator = QStringLiteral(":");
const char* const login_note =
    "Programs started after your next login see the change; programs already running (this "
    "shell too) keep their environment.\n";
#endif

bool is_variable_name(const QString& name) {
  static const QRegularExpression valid_name(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
  return valid_name.match(name).hasMatch();
}

// "user store (/home/me/.config/environment.d/90-korvel.conf)"
QString described(const cfgq_env_store& store) {
  return QStringLiteral("%1 store (%2)").arg(store.scope, store.path);
}

std::optional<QString> text_in(const cfgq_env_store& store, const QString& name) {
  QString text;
  if (store.path.isEmpty() || !cfgq_tool_env_text(store.path, name, &text)) return std::nullopt;
  return text;
}

// The store cfgq_setenv works on: the user's, unless only the machine's holds the variable.
const cfgq_env_store& chosen(const cfgq_env_store& user, const cfgq_env_store& system,
                             const QString& name) {
  return !text_in(user, name) && text_in(system, name) ? system : user;
}

// Checks a NAME argument; 0 when it is a name, else the exit status after the error line.
int check_name(const QString& what, const QString& name) {
  if (is_variable_name(name)) return exit_ok;
  return fail(what, QStringLiteral("not a variable name (letters, digits and _, not starting "
                                   "with a digit)"),
              exit_usage);
}

// Why a login would not get `value` as meant; empty when it would. A "$" starts a reference that
// the session manager's generator expands: $NAME, ${NAME}, ${NAME:-default}, ${NAME:+text}
// ("$$" is one dollar sign). A name that begins with a digit is never set, and other forms
// inside braces expand to nothing, so such text would vanish at login.
QString unexpandable(const QString& value) {
#ifdef _WIN32
  Q_UNUSED(value);
  return QString();
#else
  static const QRegularExpression braced(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*(:[-+].*)?$"),
                                         QRegularExpression::DotMatchesEverythingOption);
  for (qsizetype i = 0; i + 1 < value.size(); ++i) {
    if (value.at(i) != QLatin1Char('$')) continue;
    const QChar next = value.at(i + 1);
    QString reference;
    if (next == QLatin1Char('$')) {
      ++i;
    } else if (next.isDigit()) {
      reference = value.mid(i, 2);
    } else if (next == QLatin1Char('{')) {
      qsizetype depth = 0, end = i + 1;
      for (; end < value.size(); ++end) {
        if (value.at(end) == QLatin1Char('{')) ++depth;
        if (value.at(end) == QLatin1Char('}') && --depth == 0) break;
      }
      if (end < value.size() && !braced.match(value.mid(i + 2, end - i - 2)).hasMatch()) {
        reference = value.mid(i, end - i + 1);
      }
    }
    if (!reference.isEmpty()) {
      return QStringLiteral("a login would expand '%1' to nothing (references are $NAME, ${NAME}, "
                            "${NAME:-default} and ${NAME:+text}, a name not starting with a digit); "
                            "write $$ for a dollar sign")
          .arg(reference);
    }
  }
  return QString();
#endif
}

void add_setenv_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("append"),
                    QStringLiteral("Add VALUE to the end of the list NAME holds.")});
  parser.addOption({QStringLiteral("separator"),
                    QStringLiteral("The list separator (default '%1').").arg(default_separator),
                    QStringLiteral("S")});
  parser.addOption({QStringLiteral("process"),
                    QStringLiteral("Set it in this process's environment too (for tests).")});
}

// What happened, in a line: "Appended ... to PATH in the user store (...):".
QString outcome_line(const QString& name, const QString& value, bool append,
                     const std::optional<QString>& before, const QString& after,
                     const QString& where) {
  if (value.isEmpty()) return QStringLiteral("Removed %1 from the %2.\n").arg(name, where);
  if (append && !before && after.startsWith(QStringLiteral("${%1").arg(name))) {
    return QStringLiteral("Appended %1 to %2 in the %3, after the session's own %2:\n")
        .arg(value, name, where);
  }
  if (append && before) {
    return QStringLiteral("Appended %1 to %2 in the %3:\n").arg(value, name, where);
  }
  if (before) {
    return QStringLiteral("Replaced %1 in the %2; it was %3, now:\n").arg(name, where, *before);
  }
  return QStringLiteral("Set %1 in the %2:\n").arg(name, where);
}

int run_setenv(const invocation& call) {
  const QString name = call.args.at(0);
  const QString value = call.args.at(1);
  const QString what = QStringLiteral("setenv %1").arg(name);
  if (const int status = check_name(what, name)) return status;
  if (const QString why = unexpandable(value); !why.isEmpty()) return fail(what, why, exit_usage);
  const cfgq_env_store user = cfgq_tool_env_store(false);
  const cfgq_env_store system = cfgq_tool_env_store(true);
  if (user.path.isEmpty()) return fail(what, user.problem, exit_failed);
  // Each call reads the current text, then writes: one call at a time, so that none is lost.
  QString lock_why;
  const std::shared_ptr<void> held = cfgq_tool_hold_env_lock(&lock_why);
  if (!held) return fail(what, QStringLiteral("%1: %2").arg(user.path, lock_why), exit_failed);
  const cfgq_env_store& target = chosen(user, system, name);
  const std::optional<QString> before = text_in(target, name);

  const bool append = call.options.isSet(QStringLiteral("append"));
  QString separator = call.options.value(QStringLiteral("separator"));
  if (separator.isEmpty()) separator = default_separator;
  cfgq_write_failure failure;
  cfgq_tool_take_write_failure(&failure);  // only this call's failure counts
  QString scope;
  if (!cfgq_setenv(name, value, scope, append, separator,
                   call.options.isSet(QStringLiteral("process")))) {
    print(QStringLiteral("%1 already holds %2 in the %3 (items are compared ignoring case); "
                         "nothing changed.\n")
              .arg(name, value, described(target)));
    return exit_ok;
  }
  if (cfgq_tool_take_write_failure(&failure)) {
    return fail(what, QStringLiteral("%1: %2").arg(failure.path, failure.reason), exit_failed);
  }
  const cfgq_env_store& written = scope == system.scope ? system : user;
  const std::optional<QString> after = text_in(written, name);
  QString report = outcome_line(name, value, append, before, after.value_or(QString()),
                                described(written));
  if (after) report += QStringLiteral("  %1=%2\n").arg(name, *after);
  const bool session_defines = !qEnvironmentVariableIsEmpty(name.toLocal8Bit().constData());
  if (!append && !before && after && session_defines && !after->contains(QLatin1Char('$'))) {
    report += QStringLiteral("It replaces the session's own %1 at the next login; --append "
                             "would extend it instead.\n")
                  .arg(name);
  }
  print(report + QLatin1String(login_note));
  return exit_ok;
}

#ifndef _WIN32
const QString generator_path =
    QStringLiteral("/usr/lib/systemd/user-environment-generators/30-systemd-environment-d-generator");

// A value as the generator prints it: bare, or in double quotes with backslash and C escapes.
QByteArray generator_value(const QByteArray& text) {
  if (!text.startsWith('"') || !text.endsWith('"') || text.size() < 2) return text;
  QByteArray value;
  for (qsizetype i = 1; i + 1 < text.size(); ++i) {
    if (text[i] != '\\' || i + 2 >= text.size()) {
      value.append(text[i]);
      continue;
    }
    const char c = text[++i];
    if (c == 'x') {
      value.append(static_cast<char>(text.mid(i + 1, 2).toInt(nullptr, 16)));
      i += 2;
    } else {
      value.append(c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c);
    }
  }
  return value;
}

// `getenv NAME --login`: runs the session manager's environment generator the way a login runs
// it, on the environment a user's session manager starts from (the account's variables and the
// default PATH), and prints what it gives NAME.
int login_value(const QString& name) {
  const QString what = QStringLiteral("getenv %1 --login").arg(name);
  if (!QFileInfo(generator_path).isExecutable()) {
    return fail(what, QStringLiteral("no environment generator at %1 (Debian package systemd)").arg(generator_path),
                exit_failed);
  }
  QProcessEnvironment base;
  for (const char* kept : {"HOME", "USER", "LOGNAME", "SHELL", "LANG", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"}) {
    const QString value = qEnvironmentVariable(kept);
    if (!value.isEmpty()) base.insert(QLatin1String(kept), value);
  }
  base.insert(QStringLiteral("PATH"), QStringLiteral("/usr/local/bin:/usr/bin:/bin"));
  const QString config = base.contains(QStringLiteral("XDG_CONFIG_HOME"))
                             ? base.value(QStringLiteral("XDG_CONFIG_HOME"))
                             : base.value(QStringLiteral("HOME")) + QStringLiteral("/.config");
  const cfgq_env_store user = cfgq_tool_env_store(false);
  if (QFileInfo(user.path).absolutePath() != QFileInfo(config + QStringLiteral("/environment.d")).absoluteFilePath()) {
    note(QStringLiteral("note: a login does not read the user store %1 (it reads %2/environment.d)")
             .arg(user.path, config));
  }
  QProcess generator;
  generator.setProcessEnvironment(base);
  generator.start(generator_path, {});
  if (!generator.waitForFinished(30'000) || generator.exitStatus() != QProcess::NormalExit || generator.exitCode() != 0) {
    return fail(what, QStringLiteral("%1 failed: %2").arg(generator_path, QString::fromLocal8Bit(generator.readAllStandardError()).trimmed()),
                exit_failed);
  }
  const QByteArray prefix = name.toUtf8() + '=';
  for (const QByteArray& line : generator.readAllStandardOutput().split('\n')) {
    if (!line.startsWith(prefix)) continue;
    print(name + QLatin1Char('=') + QString::fromUtf8(generator_value(line.mid(prefix.size()))) + QLatin1Char('\n'));
    return exit_ok;
  }
  return fail(what, QStringLiteral("the stores give a login no %1 (it keeps what the session manager has)").arg(name),
              exit_absent);
}
#endif

void add_getenv_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("login"),
                    QStringLiteral("Print NAME=VALUE as the next login gets it from the stores: the "
                                   "session manager's own generator expands them.")});
}

int run_getenv(const invocation& call) {
  const QString name = call.args.at(0);
  if (const int status = check_name(QStringLiteral("getenv %1").arg(name), name)) return status;
#ifndef _WIN32
  if (call.options.isSet(QStringLiteral("login"))) return login_value(name);
#endif
  const cfgq_env_store user = cfgq_tool_env_store(false);
  const cfgq_env_store system = cfgq_tool_env_store(true);
  bool found = false;
  QString report;
  for (const cfgq_env_store* store : {&user, &system}) {
    const std::optional<QString> text = text_in(*store, name);
    found = found || text.has_value();
    report += QStringLiteral("%1: %2\n")
                  .arg(store->path.isEmpty() ? store->scope + QStringLiteral(" store")
                                             : described(*store),
                       text ? *text : QStringLiteral("not set"));
    if (!store->path.isEmpty() && !store->problem.isEmpty()) {
      report += QStringLiteral("  (%1)\n").arg(store->problem);
    }
  }
  if (user.path.isEmpty()) {
    report += QStringLiteral("'cfgq setenv %1' can't write: %2\n").arg(name, user.problem);
  } else {
    report += QStringLiteral("'cfgq setenv %1' writes the %2 store.\n")
                  .arg(name, chosen(user, system, name).scope);
  }
  if (!found && !qEnvironmentVariableIsEmpty(name.toLocal8Bit().constData())) {
    report += QStringLiteral("Neither store sets %1: a login keeps the session's own value, "
                             "which 'cfgq setenv %1 ITEM --append' extends.\n")
                  .arg(name);
  }
  print(report);
  return found ? exit_ok : exit_absent;
}

int run_unsetenv(const invocation& call) {
  const QString name = call.args.at(0);
  const QString what = QStringLiteral("unsetenv %1").arg(name);
  if (const int status = check_name(what, name)) return status;
  const cfgq_env_store user = cfgq_tool_env_store(false);
  const cfgq_env_store system = cfgq_tool_env_store(true);
  if (!text_in(user, name) && !text_in(system, name)) {
    // A store the session manager ignores as a whole may still hold the line.
    for (const cfgq_env_store* store : {&user, &system}) {
      if (!store->path.isEmpty() && !store->problem.isEmpty()) {
        return fail(what, QStringLiteral("%1: %2").arg(store->path, store->problem), exit_failed);
      }
    }
    print(QStringLiteral("Neither store sets %1; nothing changed.\n").arg(name));
    return exit_absent;
  }
  const cfgq_env_store& target = text_in(user, name) ? user : system;
  QString why;
  if (!cfgq_tool_env_remove(target.path, name, &why)) {
    return fail(what, QStringLiteral("%1: %2").arg(target.path, why), exit_failed);
  }
  QString report = QStringLiteral("Removed %1 from the %2.\n").arg(name, described(target));
  if (&target == &user && text_in(system, name)) {
    report += QStringLiteral("The system store still sets it.\n");
  }
  print(report + QLatin1String(login_note));
  return exit_ok;
}

int run_env(const invocation&) {
  QString report;
  for (const bool system : {false, true}) {
    const cfgq_env_store store = cfgq_tool_env_store(system);
    report += store.path.isEmpty() ? store.scope + QStringLiteral(" store:\n")
                                   : described(store) + QStringLiteral(":\n");
    if (!store.problem.isEmpty()) report += QStringLiteral("  (%1)\n").arg(store.problem);
    const auto variables = cfgq_tool_env_variables(store.path);
    if (variables.isEmpty() && store.problem.isEmpty()) report += QStringLiteral("  (none)\n");
    for (const auto& [name, text] : variables) {
      report += QStringLiteral("  %1=%2\n").arg(name, text);
    }
  }
  print(report);
  return exit_ok;
}

}  // namespace

std::vector<command> env_commands() {
  return {
      {"setenv", "NAME VALUE [--append] [--separator S]", 2, 2,
       "set an environment variable for programs started later",
       "Sets NAME to VALUE in the user's persistent environment (or in the machine's, when only\n"
       "that one holds NAME) and says which file it wrote. With --append, VALUE is added to the\n"
       "end of the list NAME holds, unless the list holds it already (ignoring case); a list\n"
       "the session defines (PATH) is extended, never replaced. An extended list is stored in\n"
       "a form a login expands without an empty item (which would be the current directory):\n"
       "PATH=${PATH:+${PATH}:}VALUE; XDG_DATA_DIRS and XDG_CONFIG_DIRS keep their defaults when\n"
       "the login has none (${XDG_DATA_DIRS:-/usr/local/share/:/usr/share/}:VALUE), and MANPATH\n"
       "ends in ':' so that the manual's own directories stay. An empty VALUE removes NAME.\n"
       "VALUE is stored as written: ${NAME} and $NAME stay references, $$ is one dollar sign;\n"
       "tabs, line breaks and other characters come back exactly. A VALUE a login would not get\n"
       "as written is refused with the reason (exit status 2): '$5' or '${A-b}' expand to\n"
       "nothing (write $$5 for the text $5).",
       add_setenv_options, run_setenv},
      {"getenv", "NAME [--login]", 1, 1, "what each environment store holds for a variable",
       "Prints the text each store holds for NAME (before expansion) and which store the next\n"
       "'cfgq setenv NAME' writes. Exit status 1 when neither store holds NAME.\n"
       "--login prints NAME=VALUE as the next login gets it: the session manager's environment\n"
       "generator (/usr/lib/systemd/user-environment-generators/30-systemd-environment-d-generator)\n"
       "is run as a login runs it, from the account's variables and the default PATH\n"
       "/usr/local/bin:/usr/bin:/bin; exit status 1 when the login gets no NAME from the stores,\n"
       "3 when the generator is missing or fails.",
       add_getenv_options, run_getenv},
      {"unsetenv", "NAME", 1, 1, "remove a variable from the environment store that holds it",
       "Removes NAME from the user's store, or from the machine's when only that one holds it.\n"
       "Every other line of the store stays as it was. Exit status 1 when neither holds NAME.",
       nullptr, run_unsetenv},
      {"env", "", 0, 0, "every variable of both environment stores",
       "Lists the user's and the machine's store, each with its file and the variables it\n"
       "holds as NAME=TEXT (the text before expansion).",
       nullptr, run_env},
  };
}

}  // namespace cli
