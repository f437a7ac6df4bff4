// Commands for a version's settings as a whole: migrate, reset.
#include <cstdio>
#include <string>

#include <QTextStream>

#ifndef _WIN32
#include <unistd.h>
#endif

#include "cli.h"

namespace cli {
namespace {

const QString marker_name = QStringLiteral("Registry_version");

// The running main key's values apart from the format marker.
struct main_key_state {
  bool present = false;
  QVariant marker;
  qsizetype values = 0;
};

main_key_state state_of(const QString& main_key) {
  main_key_state state;
  const auto root = std::make_unique<CFGQ_REGISTRY_KEY>(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
  state.present = root->childGroups().contains(main_key);
  root->beginGroup(main_key);
  state.marker = root->value(marker_name);
  state.values = root->allKeys().size() - (root->contains(marker_name) ? 1 : 0);
  return state;
}

bool stdin_is_terminal() {
#ifdef _WIN32
  return true;
#else
  return isatty(STDIN_FILENO) == 1;
#endif
}

int run_migrate(const invocation& call) {
  const QString main_key = running_main_key();
  const QString file = settings_file_path();
  const QString cannot = unwritable_reason(file);
  if (!cannot.isEmpty()) return fail(call.command, QStringLiteral("%1: %2").arg(file, cannot), exit_failed);

  const main_key_state before = state_of(main_key);
  CFGQ_REGISTRY::migrate_registry_settings();
  const main_key_state after = state_of(main_key);

  if (!before.present && after.values > 0) {
    print(QStringLiteral("Carried %1 forward into %2 from an earlier version's settings.\n")
              .arg(count_of(after.values, "value", "values"), main_key));
  } else if (!before.present) {
    print(QStringLiteral("No earlier version's settings were found; %1 starts from the defaults.\n")
              .arg(main_key));
  } else if (before.values != after.values) {
    print(QStringLiteral("%1 held %2 written before its first migration (no current format "
                         "marker); they were removed, so the tools start from their defaults.\n")
              .arg(main_key, count_of(before.values, "value", "values")));
  } else {
    print(QStringLiteral("%1 is migrated already; nothing changed.\n").arg(main_key));
  }
  return exit_ok;
}

void add_reset_options(QCommandLineParser& parser) {
  parser.addOption({{QStringLiteral("y"), QStringLiteral("yes")},
                    QStringLiteral("Don't ask for confirmation.")});
}

int run_reset(const invocation& call) {
  const QString main_key = running_main_key();
  const QString file = settings_file_path();
  const main_key_state before = state_of(main_key);
  if (!call.options.isSet(QStringLiteral("yes"))) {
    if (!stdin_is_terminal()) {
      return fail(call.command,
                  QStringLiteral("standard input is not a terminal; add --yes to confirm"),
                  exit_usage);
    }
    print(QStringLiteral("Remove all %1 of %2 from %3? The tools then start from their "
                         "defaults. [y/N] ")
              .arg(count_of(before.values, "value", "values"), main_key, file));
    std::fflush(stdout);
    QTextStream in(stdin);
    const QString answer = in.readLine().trimmed().toLower();
    if (answer != QLatin1String("y") && answer != QLatin1String("yes")) {
      print(QStringLiteral("Nothing changed.\n"));
      return exit_ok;
    }
  }
  const QString cannot = unwritable_reason(file);
  if (!cannot.isEmpty()) return fail(call.command, QStringLiteral("%1: %2").arg(file, cannot), exit_failed);
  CFGQ_REGISTRY::delete_current_settings();
  print(QStringLiteral("Removed %1 from %2; the tools start from their defaults.\n")
            .arg(count_of(before.values, "value", "values"), main_key));
  return exit_ok;
}

}  // namespace

std::vector<command> version_commands() {
  return {
      {"migrate", "", 0, 0, "carry settings forward from an earlier version",
       "Fills the running version's main key once from the first earlier installed version\n"
       "that has settings (a main key written before its first migration is emptied instead),\n"
       "and says what happened. Running it again changes nothing.",
       nullptr, run_migrate},
      {"reset", "[--yes]", 0, 0, "remove the running version's settings",
       "Removes every setting of the running version, so that the tools start from their\n"
       "defaults; a later migrate does not bring the old settings back. Asks for confirmation\n"
       "on the terminal; without a terminal (a script, a pipe) it needs --yes.",
       add_reset_options, run_reset},
  };
}

}  // namespace cli
