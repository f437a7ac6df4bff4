// Commands that look at and change values: path, show, get, set, keys, clear, sections.
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocale>

#include "cli.h"
#include "export_format.h"

namespace cli {
namespace {

QString file_state(const QString& path) {
  return QFileInfo::exists(path) ? QString() : QStringLiteral(" (not created yet)");
}

QString missing_section_why(const QString& section, const QString& main_key) {
  QString why = QStringLiteral("no settings stored in %1").arg(main_key);
  const QString similar = similar_section(section);
  if (!similar.isEmpty() && similar != section) {
    why += QStringLiteral(" (did you mean '%1'?)").arg(similar);
  }
  return why;
}

// A value as `show` prints it: long ones are cut, so that one runaway value (a history that
// grew without bound) doesn't bury the rest; `get` prints any value whole.
QString shown_value(const QVariant& value) {
  constexpr qsizetype most_shown = 200;
  const QString text = value_for_display(value);
  if (text.size() <= most_shown) return text;
  return QStringLiteral("%1... (%2 characters; 'cfgq get' prints it whole)")
      .arg(text.left(most_shown))
      .arg(QLocale(QLocale::English).toString(text.size()));
}

void print_tree(CFGQ_REGISTRY_KEY& view, int depth) {
  const QString indent(depth * 2, QLatin1Char(' '));
  for (const QString& key : view.childKeys()) {
    print(QStringLiteral("%1%2 = %3\n").arg(indent, key, shown_value(view.value(key))));
  }
  for (const QString& group : view.childGroups()) {
    print(QStringLiteral("%1[%2]\n").arg(indent, group));
    view.beginGroup(group);
    print_tree(view, depth + 1);
    view.endGroup();
  }
}

int run_path(const invocation&) {
  print(settings_file_path() + QLatin1Char('\n'));
  return exit_ok;
}

void add_show_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("all"), QStringLiteral("Show every main key of the file.")});
  add_main_key_option(parser);
}

int show_all(const std::optional<QString>& section) {
  auto root = std::make_unique<CFGQ_REGISTRY_KEY>(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
  const QString file = root->fileName();
  if (root->allKeys().isEmpty()) {
    print(QStringLiteral("No settings are stored yet.\nSettings file: %1%2\n").arg(file, file_state(file)));
    return exit_ok;
  }
  const QString running = running_main_key();
  print(QStringLiteral("Settings file: %1\n").arg(file));
  if (!section && !root->childKeys().isEmpty()) {
    print(QStringLiteral("(outside any main key)\n"));
    for (const QString& key : root->childKeys()) {
      print(QStringLiteral("  %1 = %2\n").arg(key, shown_value(root->value(key))));
    }
  }
  bool shown = false;
  for (const QString& main_key : root->childGroups()) {
    const QString mark = main_key == running ? QStringLiteral("  (running version)") : QString();
    root->beginGroup(main_key);
    if (section) {
      if (root->childGroups().contains(section->section(QLatin1Char('/'), 0, 0))) {
        root->beginGroup(*section);
        if (!root->allKeys().isEmpty()) {
          print(QStringLiteral("[%1/%2]%3\n").arg(main_key, *section, mark));
          print_tree(*root, 1);
          shown = true;
        }
        root->endGroup();
      }
    } else {
      print(QStringLiteral("[%1]%2\n").arg(main_key, mark));
      print_tree(*root, 1);
      shown = true;
    }
    root->endGroup();
  }
  if (!shown) {
    return fail(QStringLiteral("show %1").arg(*section),
                missing_section_why(*section, QStringLiteral("any main key")), exit_absent);
  }
  return exit_ok;
}

int run_show(const invocation& call) {
  std::optional<QString> section;
  if (!call.args.isEmpty()) {
    QString why;
    section = resolve_section(call.args.at(0), &why);
    if (!section) return fail(QStringLiteral("show"), why, exit_usage);
  }
  if (call.options.isSet(QStringLiteral("all"))) return show_all(section);

  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, section.value_or(QString()));
  if (view->allKeys().isEmpty()) {
    if (section) {
      return fail(QStringLiteral("show %1").arg(*section), missing_section_why(*section, main_key),
                  exit_absent);
    }
    const QString file = view->fileName();
    print(QStringLiteral("No settings are stored yet for %1.\nSettings file: %2%3\n")
              .arg(main_key, file, file_state(file)));
    const QStringList others =
        CFGQ_REGISTRY_KEY(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr).childGroups();
    if (!others.isEmpty()) {
      print(QStringLiteral("The file holds settings of %1 ('cfgq show --all' shows them; "
                           "'cfgq migrate' carries an earlier version's forward).\n")
                .arg(others.join(QStringLiteral(", "))));
    }
    return exit_ok;
  }
  print(QStringLiteral("[%1]\n").arg(view->group()));
  print_tree(*view, 1);
  return exit_ok;
}

void add_value_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("json"),
                    QStringLiteral("The value in the JSON notation of 'cfgq export' (lists, byte "
                                   "arrays, numbers, booleans).")});
  add_main_key_option(parser);
}

// The place a SECTION KEY pair names: the view's group and the value name within it.
struct value_place {
  QString group;  // section and the key's subgroups
  QString name;
  QString shown;  // "General/Dialogs/Width", for messages
};

std::optional<value_place> place_of(const invocation& call, int* status) {
  QString why;
  const std::optional<QString> section = resolve_section(call.args.at(0), &why);
  value_place place;
  QString subgroup;
  if (section && !split_key(call.args.at(1), &subgroup, &place.name)) {
    why = QStringLiteral("a key name must not be empty");
  }
  if (!why.isEmpty()) {
    *status = fail(call.command, why, exit_usage);
    return std::nullopt;
  }
  place.group = subgroup.isEmpty() ? *section : *section + QLatin1Char('/') + subgroup;
  place.shown = place.group + QLatin1Char('/') + place.name;
  return place;
}

int run_get(const invocation& call) {
  int status = exit_ok;
  const std::optional<value_place> place = place_of(call, &status);
  if (!place) return status;
  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, place->group);
  QVariant value;
  if (!view->get_value(place->name, &value)) {
    QString why = QStringLiteral("not set in %1").arg(main_key);
    const QString section = place->group.section(QLatin1Char('/'), 0, 0);
    auto section_view = open_view(main_key, section);
    if (section_view->allKeys().isEmpty()) why = missing_section_why(section, main_key);
    return fail(QStringLiteral("get %1").arg(place->shown), why, exit_absent);
  }
  if (call.options.isSet(QStringLiteral("json"))) {
    print(json_text(value_to_json(value)) + QLatin1Char('\n'));
  } else if (value.metaType().id() == QMetaType::QByteArray) {
    print_bytes(value.toByteArray());
  } else if (value.metaType().id() == QMetaType::QStringList) {
    for (const QString& item : value.toStringList()) print(item + QLatin1Char('\n'));
  } else if (value.metaType().id() == QMetaType::QString || !value.isValid()) {
    print(value.toString() + QLatin1Char('\n'));
  } else {
    print(value_for_display(value) + QLatin1Char('\n'));
  }
  return exit_ok;
}

int run_set(const invocation& call) {
  int status = exit_ok;
  const std::optional<value_place> place = place_of(call, &status);
  if (!place) return status;
  const QString what = QStringLiteral("set %1").arg(place->shown);
  QVariant value = call.args.at(2);
  if (call.options.isSet(QStringLiteral("json"))) {
    // Wrapped in an array: a JSON document must be an array or an object.
    QJsonParseError error;
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray("[") + call.args.at(2).toUtf8() + ']', &error);
    QString why;
    if (error.error != QJsonParseError::NoError || document.array().size() != 1) {
      return fail(what, QStringLiteral("not a JSON value: %1").arg(call.args.at(2)), exit_usage);
    }
    if (!value_from_json(document.array().at(0), &value, &why)) return fail(what, why, exit_usage);
  }
  const qsizetype units = value.toString().size();
  if (units >= max_value_utf16_units) {
    return fail(what,
                QStringLiteral("value too large to store: %1 UTF-16 code units (the limit is "
                               "9,999,999)")
                    .arg(units),
                exit_usage);
  }
  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, place->group);
  const QString cannot = unwritable_reason(view->fileName());
  if (!cannot.isEmpty()) return fail(what, QStringLiteral("%1: %2").arg(view->fileName(), cannot), exit_failed);
  const QString section = place->group.section(QLatin1Char('/'), 0, 0);
  if (similar_section(section) != section && open_view(main_key, section)->allKeys().isEmpty()) {
    note(QStringLiteral("note: '%1' is a new section, not one of the suite's (see 'cfgq sections')")
             .arg(section));
  }
  view->set_value(place->name, value);
  return exit_ok;
}

int run_keys(const invocation& call) {
  QString why;
  const std::optional<QString> section = resolve_section(call.args.at(0), &why);
  if (!section) return fail(call.command, why, exit_usage);
  const QString main_key = chosen_main_key(call);
  QStringList keys = open_view(main_key, *section)->allKeys();
  if (keys.isEmpty()) {
    return fail(QStringLiteral("keys %1").arg(*section), missing_section_why(*section, main_key),
                exit_absent);
  }
  keys.sort();
  for (const QString& key : keys) print(key + QLatin1Char('\n'));
  return exit_ok;
}

int run_clear(const invocation& call) {
  QString why;
  const std::optional<QString> section = resolve_section(call.args.at(0), &why);
  if (!section) return fail(call.command, why, exit_usage);
  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, *section);
  const qsizetype count = view->allKeys().size();
  if (count == 0) {
    print(QStringLiteral("Nothing to clear: %1 holds no settings in %2.\n").arg(*section, main_key));
    return exit_ok;
  }
  const QString cannot = unwritable_reason(view->fileName());
  if (!cannot.isEmpty()) {
    return fail(QStringLiteral("clear %1").arg(*section),
                QStringLiteral("%1: %2").arg(view->fileName(), cannot), exit_failed);
  }
  view->clear_registry_key();
  print(QStringLiteral("Removed %1 from %2/%3.\n")
            .arg(count_of(count, "value", "values"), main_key, *section));
  return exit_ok;
}

int run_sections(const invocation& call) {
  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, QString());
  QStringList groups = view->childGroups();
  print(QStringLiteral("%1%2VALUES IN %3\n")
            .arg(QStringLiteral("ENUMERATOR").leftJustified(20), QStringLiteral("GROUP").leftJustified(34), main_key));
  for (int key = CFGQ_REGISTRY_KEY::GENERAL; key < CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++key) {
    const auto& row = section_row(key);
    const QString group = QString::fromUtf8(row.sub_key_name);
    qsizetype count = 0;
    if (groups.removeAll(group) > 0) {
      view->beginGroup(group);
      count = view->allKeys().size();
      view->endGroup();
    }
    print(QStringLiteral("%1%2%3\n")
              .arg(QString::fromUtf8(row.enum_name).leftJustified(20), group.leftJustified(34),
                   count > 0 ? QString::number(count) : QStringLiteral("-")));
  }
  if (!groups.isEmpty()) {
    print(QStringLiteral("\nOther groups in %1 (not in the section table):\n").arg(main_key));
    for (const QString& group : groups) {
      view->beginGroup(group);
      print(QStringLiteral("  %1%2\n").arg(group.leftJustified(52), QString::number(view->allKeys().size())));
      view->endGroup();
    }
  }
  return exit_ok;
}

}  // namespace

std::vector<command> store_commands() {
  return {
      {"path", "", 0, 0, "the settings file in use",
       "Prints the path of the settings file in use: korvel2.kreg in the profile directory, or\n"
       "the process's temporary file in test and headless runs.",
       nullptr, run_path},
      {"show", "[SECTION] [--all]", 0, 1, "the settings as a tree (--all: every main key)",
       "Shows the running version's settings (or one SECTION of them) as a tree: groups in\n"
       "[brackets], values as 'key = value'. Text is shown as it stands, or quoted when it has\n"
       "blanks at either end or line breaks; lists, byte arrays and typed values in the JSON\n"
       "notation of 'cfgq export'. On an empty profile it says that nothing is stored yet and\n"
       "where the file would be. Exit status 1 when SECTION holds nothing.",
       add_show_options, run_show},
      {"get", "SECTION KEY [--json]", 2, 2, "one value (exit status 1 when absent)",
       "Prints one value: text as it stands, a list one item per line, a byte array as its\n"
       "raw bytes. KEY may reach below the section with \"/\" (Dialogs/Find/Width): levels\n"
       "before the last \"/\" are subgroups of the section and the last is the value's name,\n"
       "which only matches a value of that subgroup itself. Exit status 1 when it is not set.",
       add_value_options, run_get},
      {"set", "SECTION KEY VALUE [--json]", 3, 3, "write one value",
       "Writes VALUE as text under KEY in SECTION (KEY may reach into subgroups with \"/\").\n"
       "With --json, VALUE is in the JSON notation of 'cfgq export': 640, true, [\"a\",\"b\"],\n"
       "{\"@bytes\": \"AAH/\"}. Put -- before a VALUE that begins with '-'.",
       add_value_options, run_set},
      {"keys", "SECTION", 1, 1, "every key at or below a section",
       "Lists every key at or below SECTION, one per line, subgroups' keys as paths joined by\n"
       "\"/\". Exit status 1 when the section holds nothing.",
       add_main_key_option, run_keys},
      {"clear", "SECTION", 1, 1, "empty a section",
       "Removes every value at or below SECTION; other sections stay as they are.",
       add_main_key_option, run_clear},
      {"sections", "", 0, 0, "the section table and what each section holds",
       "Lists the section table: each enumerator, its group name in the file and how many\n"
       "values the main key holds in it; then any other groups of the main key.",
       add_main_key_option, run_sections},
  };
}

}  // namespace cli
