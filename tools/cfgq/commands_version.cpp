// Commands for a version's settings as a whole: migrate, reset.
#include <cstdio>
#include <string>

#include <QTextStream>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "cli.h"
#include "settings_snapshot.h"
#include "ver.h"

namespace cli {
namespace {

const QString marker_name = QString::fromLatin1(cfgq_registry_version_name);

// The running main key's values apart from the format marker.
struct main_key_state {
  bool present = false;
  QVariant marker;
  qsizetype values = 0;
};

main_key_state state_of(const QString& main_key) {
  main_key_state state;
  const auto root = open_root();
  state.present = root->childGroups().contains(main_key);
  root->beginGroup(main_key);
  state.marker = root->value(marker_name);
  state.values = root->allKeys().size() - (root->contains(marker_name) ? 1 : 0);
  return state;
}

bool stdin_is_terminal() {
#ifdef _WIN32
  return _isatty(_fileno(stdin)) != 0;  // a console; a pipe or a file is none
#else
  return isatty(STDIN_FILENO) == 1;
#endif
}

// The marker value the library writes; a main key with a smaller one, or none, was written before
// its first migration and the migration empties it.
constexpr int current_marker = 27;

// What a migration of the running main key will do, found out without writing.
struct migration_plan {
  enum { nothing, remove, copy, fresh } kind = nothing;
  QString source;          // the main key copied from
  QString source_version;  // its version text, "24.3"
  qsizetype values = 0;    // values removed, or values the source holds
};

migration_plan plan_migration(const QString& main_key) {
  migration_plan plan;
  const main_key_state state = state_of(main_key);
  if (state.present) {
    const bool current = state.marker.isValid() && state.marker.toInt() >= current_marker;
    plan.kind = current ? migration_plan::nothing : migration_plan::remove;
    plan.values = current ? 0 : state.values;
    return plan;
  }
  // The installed versions in the order of preference: the first earlier one with any value.
  const std::string running = ver_get_version();
  plan.kind = migration_plan::fresh;
  for (const std::string& version : ver_get_all_versions()) {
    if (version == running) continue;
    const QString source =
        CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::NO_SUB_KEY, version.c_str(), nullptr).group();
    const qsizetype values = open_view(source, QString())->allKeys().size();
    if (values == 0) continue;
    plan = {migration_plan::copy, source, QString::fromStdString(version), values};
    break;
  }
  return plan;
}

// Asks on the terminal whether to go on; true for "y" or "yes".
bool confirmed(const QString& question) {
  print(question + QStringLiteral(" [y/N] "));
  std::fflush(stdout);
  QTextStream in(stdin);
  const QString answer = in.readLine().trimmed().toLower();
  return answer == QLatin1String("y") || answer == QLatin1String("yes");
}

void add_migrate_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("dry-run"),
                    QStringLiteral("Say what the migration would do, and change nothing.")});
  parser.addOption({{QStringLiteral("y"), QStringLiteral("yes")},
                    QStringLiteral("Don't ask before removing values.")});
}

int run_migrate(const invocation& call) {
  const QString main_key = running_main_key();
  const migration_plan plan = plan_migration(main_key);
  const QString them = plan.values == 1 ? QStringLiteral("it") : QStringLiteral("them");
  const QString removal =
      QStringLiteral("%1 holds %2 written before its first migration (no current format marker)")
          .arg(main_key, count_of(plan.values, "value", "values"));
  if (call.options.isSet(QStringLiteral("dry-run"))) {
    switch (plan.kind) {
      case migration_plan::nothing:
        print(QStringLiteral("%1 is migrated already; migrate would change nothing.\n").arg(main_key));
        break;
      case migration_plan::remove:
        print(QStringLiteral("%1; migrate would remove %2, so that the tools start from their "
                             "defaults.\n").arg(removal, them));
        break;
      case migration_plan::copy:
        print(QStringLiteral("migrate would carry %1 (version %2) forward into %3: %4, less the "
                             "few that each version keeps for itself.\n")
                  .arg(plan.source, plan.source_version, main_key,
                       count_of(plan.values, "value", "values")));
        break;
      case migration_plan::fresh:
        print(QStringLiteral("No earlier version's settings were found; migrate would only mark %1 "
                             "as migrated.\n").arg(main_key));
        break;
    }
    return exit_ok;
  }

  const QString file = settings_file_path();
  const QString cannot = unwritable_reason(file);
  if (!cannot.isEmpty()) return fail(call.command, QStringLiteral("%1: %2").arg(file, cannot), exit_failed);
  if (plan.kind == migration_plan::remove && plan.values > 0 && !call.options.isSet(QStringLiteral("yes"))) {
    if (!stdin_is_terminal()) {
      return fail(call.command,
                  QStringLiteral("%1 and would be removed; standard input is not a terminal: add "
                                 "--yes to confirm (--dry-run changes nothing)")
                      .arg(removal),
                  exit_usage);
    }
    if (!confirmed(QStringLiteral("%1. Remove %2, so that the tools start from their defaults?").arg(removal, them))) {
      print(QStringLiteral("Nothing changed.\n"));
      return exit_ok;
    }
  }

  CFGQ_REGISTRY::migrate_registry_settings();
  if (const int status = check_writes(call.command); status != exit_ok) return status;
  const main_key_state after = state_of(main_key);
  switch (plan.kind) {
    case migration_plan::nothing:
      print(QStringLiteral("%1 is migrated already; nothing changed.\n").arg(main_key));
      break;
    case migration_plan::remove:
      print(QStringLiteral("Removed the %1 that %2 held from before its first migration; the tools "
                           "start from their defaults.\n")
                .arg(count_of(plan.values, "value", "values"), main_key));
      break;
    case migration_plan::copy:
      print(QStringLiteral("Carried %1 forward into %2 from %3 (version %4).\n")
                .arg(count_of(after.values, "value", "values"), main_key, plan.source, plan.source_version));
      break;
    case migration_plan::fresh:
      print(QStringLiteral("No earlier version's settings were found; %1 starts from the defaults.\n")
                .arg(main_key));
      break;
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
    if (!confirmed(QStringLiteral("Remove all %1 of %2 from %3? The tools then start from their "
                                  "defaults.")
                       .arg(count_of(before.values, "value", "values"), main_key, file))) {
      print(QStringLiteral("Nothing changed.\n"));
      return exit_ok;
    }
  }
  const QString cannot = unwritable_reason(file);
  if (!cannot.isEmpty()) return fail(call.command, QStringLiteral("%1: %2").arg(file, cannot), exit_failed);
  // The file as it stands is kept beside it first; a reset of nothing keeps an earlier copy.
  const QString copy = file + QLatin1String(reset_copy_suffix);
  if (before.values > 0) {
    QByteArray bytes;
    bool exists = false;
    QString why;
    if (!read_file_bytes(file, &bytes, &exists, &why) || !write_file_atomically(copy, bytes, &why)) {
      return fail(call.command, QStringLiteral("%1: %2 (nothing was reset)").arg(copy, why), exit_failed);
    }
  }
  CFGQ_REGISTRY::delete_current_settings();
  if (const int status = check_writes(call.command); status != exit_ok) return status;
  print(QStringLiteral("Removed %1 from %2; the tools start from their defaults.\n")
            .arg(count_of(before.values, "value", "values"), main_key));
  if (before.values > 0) {
    print(QStringLiteral("The file as it was is kept as %1; 'cfgq recover --merge reset' brings "
                         "the values back.\n").arg(copy));
  }
  return exit_ok;
}

}  // namespace

int migrate_before_write(const invocation& call, const QString& what) {
  const QString main_key = running_main_key();
  // Another file (--file) is taken as it is: migration is the user's settings file's matter.
  if (chosen_main_key(call) != main_key || other_file_in_use()) return exit_ok;
  const migration_plan plan = plan_migration(main_key);
  if (plan.kind == migration_plan::nothing) return exit_ok;
  const QString first = QStringLiteral("note: %1 was not migrated yet;").arg(main_key);
  if (call.options.isSet(QStringLiteral("no-migrate"))) {
    open_view(main_key, QString())->set_value(marker_name, current_marker);
    if (const int status = check_writes(what); status != exit_ok) return status;
    note(QStringLiteral("%1 marked it as migrated without migrating (--no-migrate)").arg(first));
    return exit_ok;
  }
  CFGQ_REGISTRY::migrate_registry_settings();
  if (const int status = check_writes(what); status != exit_ok) return status;
  switch (plan.kind) {
    case migration_plan::remove:
      note(QStringLiteral("%1 migrating it first removed the %2 it held from before its first "
                          "migration, as a suite program does at its start (--no-migrate keeps "
                          "them)")
               .arg(first, count_of(plan.values, "value", "values")));
      break;
    case migration_plan::copy:
      note(QStringLiteral("%1 migrating it first carried %2 forward from %3 (version %4), as a "
                          "suite program does at its start (--no-migrate skips this)")
               .arg(first, count_of(state_of(main_key).values, "value", "values"), plan.source,
                    plan.source_version));
      break;
    default:  // nothing to carry forward or remove: only the marker was written
      break;
  }
  return exit_ok;
}

std::vector<command> version_commands() {
  return {
      {"migrate", "[--dry-run] [--yes]", 0, 0, "carry settings forward from an earlier version",
       "Fills the running version's main key once from the first earlier installed version\n"
       "that has settings (a main key written before its first migration is emptied instead),\n"
       "and says what happened and from which version. Running it again changes nothing.\n"
       "--dry-run says what it would copy, from where, or what it would remove, and changes\n"
       "nothing. Before removing values it asks on the terminal; without a terminal it needs\n"
       "--yes.",
       add_migrate_options, run_migrate},
      {"reset", "[--yes]", 0, 0, "remove the running version's settings",
       "Removes every setting of the running version, so that the tools start from their\n"
       "defaults; a later migrate does not bring the old settings back. The file as it was is\n"
       "kept beside it with the suffix .reset ('cfgq recover' lists it; 'cfgq recover --merge\n"
       "reset' brings the values back); a reset of nothing keeps the earlier copy. Asks for\n"
       "confirmation on the terminal; without a terminal (a script, a pipe) it needs --yes.",
       add_reset_options, run_reset},
  };
}

}  // namespace cli
