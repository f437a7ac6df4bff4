// Commands that look at and change values: path, show, get, set, unset, keys, clear, sections.
#include <algorithm>
#include <utility>
#include <vector>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocale>
#include <QStringDecoder>

#include "cli.h"
#include "export_format.h"

namespace cli {
namespace {

QString file_state(const QString& path) {
  return QFileInfo::exists(path) ? QString() : QStringLiteral(" (not created yet)");
}

// The key at a main key's top that says its format is current: the migration writes it, so it
// is not a setting and `show` leaves it out.
const QString marker_name = QString::fromLatin1(cfgq_registry_version_name);

QString missing_section_why(const QString& section, const QString& main_key) {
  return QStringLiteral("no settings under '%1' in %2%3")
      .arg(section, main_key, section_hint(section, main_key));
}

// How `show` and `keys` list: a tree (or lines) for people, JSON or NUL-terminated for scripts.
enum class listing { text, json, nul, flat };

listing listing_of(const invocation& call) {
  if (call.options.isSet(QStringLiteral("json"))) return listing::json;
  if (call.options.optionNames().contains(QStringLiteral("flat"))) return listing::flat;
  if (call.options.isSet(QStringLiteral("z"))) return listing::nul;
  return listing::text;
}

void add_listing_options(QCommandLineParser& parser, const QString& json_text_help) {
  parser.addOption({QStringLiteral("json"), json_text_help});
  parser.addOption({{QStringLiteral("z"), QStringLiteral("null")},
                    QStringLiteral("End each item with a NUL character instead of a line break.")});
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

// The view's group as a tree, `depth` levels in; `hidden_key` of the group itself is left out.
// The walk keeps its place on the heap, so any depth works; indentation stops growing at 32.
void print_tree(settings_view& view, int depth, const QString& hidden_key = QString()) {
  auto indent = [](int level) { return QString(std::min(level, 32) * 2, QLatin1Char(' ')); };
  auto print_keys = [&](int level, const QString& hidden) {
    for (const QString& key : view.childKeys()) {
      if (key == hidden) continue;
      print(QStringLiteral("%1%2 = %3\n").arg(indent(level), key, shown_value(view.value(key))));
    }
  };
  struct level {
    QStringList groups;
    qsizetype next = 0;
  };
  std::vector<level> stack;
  print_keys(depth, hidden_key);
  stack.push_back({view.childGroups(), 0});
  while (!stack.empty()) {
    level& top = stack.back();
    if (top.next == top.groups.size()) {
      stack.pop_back();
      if (!stack.empty()) view.endGroup();
      continue;
    }
    const QString group = top.groups.at(top.next++);
    // A key with an empty level (hand-edited, "General\\Doubled" in the file) names a group
    // no path can enter: entering "" would stay in place for ever.
    if (group.isEmpty()) continue;
    const int here = depth + static_cast<int>(stack.size()) - 1;
    print(QStringLiteral("%1[%2]\n").arg(indent(here), group));
    view.beginGroup(group);
    print_keys(here + 1, QString());
    stack.push_back({view.childGroups(), 0});
  }
}

// One value for a NUL-terminated listing: text as it stands, other values in the export notation.
QByteArray nul_value(const QVariant& value) {
  if (value.metaType().id() == QMetaType::QString) return value.toString().toUtf8();
  return json_text(value_to_json(value)).toUtf8();
}

// Every value at or below the view's group as "path\0value\0", or for --flat as one line
// "path=value" (the value as `show` gives it, so that it stays on its line); `prefix` goes
// before each path, and `hidden` paths are left out.
void print_nul_values(settings_view& view, const QString& prefix, const QStringList& hidden,
                      listing kind = listing::nul) {
  for (const QString& key : view.allKeys()) {
    if (hidden.contains(key)) continue;
    if (kind == listing::flat) {
      print(prefix + key + QLatin1Char('=') + value_for_display(view.value(key)) + QLatin1Char('\n'));
    } else {
      print_bytes((prefix + key).toUtf8() + '\0' + nul_value(view.value(key)) + '\0');
    }
  }
}

int run_path(const invocation&) {
  const QString file = settings_file_path();
  print(file + QLatin1Char('\n'));
  const QString cause = isolation_cause();
  if (!cause.isEmpty()) {
    note(QStringLiteral("note: %1 makes this an isolated run; this is cfgq's own temporary file, "
                        "removed when it exits (unset %2 for the profile's settings file)")
             .arg(cause, cause.section(QLatin1Char('='), 0, 0)));
  }
  return exit_ok;
}

void add_show_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("all"), QStringLiteral("Show every main key of the file.")});
  add_listing_options(parser, QStringLiteral("Print the settings as a JSON object in the notation "
                                             "of 'cfgq export'."));
  parser.addOption({QStringLiteral("flat"),
                    QStringLiteral("Print one SECTION/KEY=VALUE line per value, for grep and diff.")});
  add_main_key_option(parser);
}

int show_all(const std::optional<QString>& section, listing kind) {
  auto root = open_root();
  const QString file = root->fileName();
  const QString running = running_main_key();
  if (!section && kind == listing::json) {
    print_bytes(group_json(*root, 0) + '\n');
    return exit_ok;
  }
  if (!section && (kind == listing::nul || kind == listing::flat)) {
    print_nul_values(*root, QString(), {}, kind);
    return exit_ok;
  }
  if (root->allKeys().isEmpty() && kind == listing::text) {
    print(QStringLiteral("No settings are stored yet.\nSettings file: %1%2\n").arg(file, file_state(file)));
    return exit_ok;
  }
  if (kind == listing::text) print(QStringLiteral("Settings file: %1\n").arg(file));
  if (!section && !root->childKeys().isEmpty()) {
    print(QStringLiteral("(outside any main key)\n"));
    for (const QString& key : root->childKeys()) {
      print(QStringLiteral("  %1 = %2\n").arg(key, shown_value(root->value(key))));
    }
  }
  bool shown = false;
  QByteArray json = "{";
  for (const QString& main_key : root->childGroups()) {
    const QString mark = main_key == running ? QStringLiteral("  (running version)") : QString();
    root->beginGroup(main_key);
    if (!section) {
      print(QStringLiteral("[%1]%2\n").arg(main_key, mark));
      print_tree(*root, 1, marker_name);
      shown = true;
    } else if (root->childGroups().contains(section->section(QLatin1Char('/'), 0, 0))) {
      root->beginGroup(*section);
      if (!root->allKeys().isEmpty()) {
        if (kind == listing::text) {
          print(QStringLiteral("[%1/%2]%3\n").arg(main_key, *section, mark));
          print_tree(*root, 1);
        } else if (kind == listing::json) {
          json += (shown ? ",\n    " : "\n    ") + json_text(main_key).toUtf8() + ": " + group_json(*root, 1);
        } else {
          print_nul_values(*root, main_key + QLatin1Char('/') + *section + QLatin1Char('/'), {}, kind);
        }
        shown = true;
      }
      root->endGroup();
    }
    root->endGroup();
  }
  if (!shown) {
    return fail(QStringLiteral("show %1").arg(*section),
                QStringLiteral("no settings under '%1' in any main key%2")
                    .arg(*section, section_hint(*section, running)),
                exit_absent);
  }
  if (kind == listing::json) print_bytes(json + "\n}\n");
  return exit_ok;
}

int run_show(const invocation& call) {
  std::optional<QString> section;
  if (!call.args.isEmpty()) {
    QString why;
    section = resolve_section(call.args.at(0), &why);
    if (!section) return fail(QStringLiteral("show"), why, exit_usage);
  }
  if (const int status = check_settings_file(call.command); status != exit_ok) return status;
  const listing kind = listing_of(call);
  if (call.options.isSet(QStringLiteral("all"))) return show_all(section, kind);

  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, section.value_or(QString()));
  // The migration marker is no setting: a main key holding only it holds none.
  const QString hidden = section ? QString() : marker_name;
  QStringList keys = view->allKeys();
  keys.removeAll(hidden);
  if (keys.isEmpty()) {
    if (section) {
      return fail(QStringLiteral("show %1").arg(*section), missing_section_why(*section, main_key),
                  exit_absent);
    }
    if (kind == listing::json) print(QStringLiteral("{\n}\n"));
    if (kind != listing::text) return exit_ok;
    const QString file = view->fileName();
    print(QStringLiteral("No settings are stored yet for %1.\nSettings file: %2%3\n")
              .arg(main_key, file, file_state(file)));
    const QStringList others =
        open_root()->childGroups();
    if (view->contains(marker_name)) {
      print(QStringLiteral("(%1 is marked as migrated: 'cfgq migrate' won't fill it again.)\n").arg(main_key));
    } else if (!others.isEmpty()) {
      print(QStringLiteral("The file holds settings of %1 ('cfgq show --all' shows them; "
                           "'cfgq migrate' carries an earlier version's forward).\n")
                .arg(others.join(QStringLiteral(", "))));
    }
    return exit_ok;
  }
  if (kind == listing::json) {
    print_bytes(group_json(*view, 0, hidden) + '\n');
  } else if (kind == listing::nul || kind == listing::flat) {
    print_nul_values(*view, section && kind == listing::flat ? *section + QLatin1Char('/') : QString(), {hidden}, kind);
  } else {
    print(QStringLiteral("[%1]\n").arg(view->group()));
    print_tree(*view, 1, hidden);
  }
  return exit_ok;
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

// Why a value is absent: its section holds nothing, or it does but not this key; with the
// nearest section or key as a hint.
QString absent_why(const value_place& place, const QString& main_key) {
  const QString section = place.group.section(QLatin1Char('/'), 0, 0);
  const QStringList keys = open_view(main_key, section)->allKeys();
  if (keys.isEmpty()) return missing_section_why(section, main_key);
  const QString nearest = nearest_name(place.shown.mid(section.size() + 1), keys);
  return QStringLiteral("not set in %1%2")
      .arg(main_key, nearest.isEmpty() ? QString()
                                       : QStringLiteral(" (did you mean '%1/%2'?)").arg(section, nearest));
}

void add_get_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("json"),
                    QStringLiteral("The value in the JSON notation of 'cfgq export' (lists, byte "
                                   "arrays, numbers, booleans).")});
  parser.addOption({QStringLiteral("default"),
                    QStringLiteral("Print TEXT (exit status 0) when the value is not set."),
                    QStringLiteral("TEXT")});
  add_main_key_option(parser);
}

int run_get(const invocation& call) {
  int status = exit_ok;
  const std::optional<value_place> place = place_of(call, &status);
  if (!place) return status;
  if (const int checked = check_settings_file(call.command); checked != exit_ok) return checked;
  const QString main_key = chosen_main_key(call);
  auto view = open_view(main_key, place->group);
  QVariant value;
  if (!view->get_value(place->name, &value)) {
    if (call.options.isSet(QStringLiteral("default"))) {
      print(call.options.value(QStringLiteral("default")) + QLatin1Char('\n'));
      return exit_ok;
    }
    return fail(QStringLiteral("get %1").arg(place->shown), absent_why(*place, main_key), exit_absent);
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

void add_set_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("json"),
                    QStringLiteral("VALUE is in the JSON notation of 'cfgq export' (lists, byte "
                                   "arrays, numbers, booleans).")});
  parser.addOption({QStringLiteral("value-file"),
                    QStringLiteral("Take VALUE from FILE (one final line break dropped)."),
                    QStringLiteral("FILE")});
  add_write_options(parser);
}

// The VALUE of `set`: the argument, standard input for "-", or --value-file's contents. A file
// or standard input is UTF-8 text; one final line break is dropped, as the shell drops it from
// "$(cat FILE)".
bool value_text(const invocation& call, QString* text, QString* why, int* status) {
  const bool from_file = call.options.isSet(QStringLiteral("value-file"));
  if (from_file && call.args.size() == 3) {
    *why = QStringLiteral("give VALUE or --value-file, not both");
    *status = exit_usage;
    return false;
  }
  if (!from_file && call.args.at(2) != QLatin1String("-")) {
    *text = call.args.at(2);
    return true;
  }
  const QString name = from_file ? call.options.value(QStringLiteral("value-file")) : QStringLiteral("standard input");
  // A UTF-16 code unit takes at most three bytes of UTF-8: more bytes than that can't fit.
  constexpr qint64 most_bytes = 3 * max_value_utf16_units;
  QByteArray bytes;
  QString reason;
  QFile file(name);
  const bool read = from_file ? file.open(QIODevice::ReadOnly) &&
                                    ((bytes = file.read(most_bytes + 1)).size() > most_bytes ||
                                     file.error() == QFileDevice::NoError)
                              : read_standard_input(most_bytes, &bytes, &reason);
  if (!read) {
    *why = QStringLiteral("%1: %2").arg(name, from_file ? file.errorString() : reason);
    *status = exit_failed;
    return false;
  }
  if (bytes.size() > most_bytes) {
    *why = QStringLiteral("%1: value too large to store (more than 30,000,000 bytes; the limit is "
                          "9,999,999 UTF-16 code units)").arg(name);
    *status = exit_usage;
    return false;
  }
  if (bytes.endsWith('\n')) bytes.chop(bytes.endsWith("\r\n") ? 2 : 1);
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  *text = decoder.decode(bytes);
  if (decoder.hasError()) {
    *why = QStringLiteral("%1: not valid UTF-8 text").arg(name);
    *status = exit_usage;
    return false;
  }
  return true;
}

int run_set(const invocation& call) {
  if (call.args.size() < 3 && !call.options.isSet(QStringLiteral("value-file"))) {
    return fail(call.command,
                QStringLiteral("missing argument (usage: cfgq set SECTION KEY VALUE|- [--json] "
                               "[--value-file FILE])"),
                exit_usage);
  }
  int status = exit_ok;
  const std::optional<value_place> place = place_of(call, &status);
  if (!place) return status;
  const QString what = QStringLiteral("set %1").arg(place->shown);
  QString text;
  QString why;
  if (!value_text(call, &text, &why, &status)) return fail(what, why, status);
  QVariant value = text;
  if (call.options.isSet(QStringLiteral("json"))) {
    // Wrapped in an array: a JSON document must be an array or an object.
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray("[") + text.toUtf8() + ']', &error);
    if (error.error != QJsonParseError::NoError || document.array().size() != 1) {
      return fail(what, QStringLiteral("not a JSON value: %1").arg(text.left(200)), exit_usage);
    }
    if (!value_from_json(document.array().at(0), &value, &why)) return fail(what, why, exit_usage);
  }
  const qsizetype units = value.toString().size();
  if (cfgq_value_too_large(units)) {
    return fail(what,
                QStringLiteral("value too large to store: %1 UTF-16 code units (the limit is "
                               "9,999,999)")
                    .arg(units),
                exit_usage);
  }
  const QString main_key = chosen_main_key(call);
  const QString file = settings_file_path();
  const QString cannot = unwritable_reason(file);
  if (!cannot.isEmpty()) return fail(what, QStringLiteral("%1: %2").arg(file, cannot), exit_failed);
  if (const int migrated = migrate_before_write(call, what)) return migrated;
  if (const int checked = check_room(what, {{main_key + QLatin1Char('/') + place->shown, value}})) return checked;
  auto view = open_view(main_key, place->group);
  const QString section = place->group.section(QLatin1Char('/'), 0, 0);
  if (similar_section(section) != section && open_view(main_key, section)->allKeys().isEmpty()) {
    note(QStringLiteral("note: '%1' is a new section, not one of the suite's%2 (see 'cfgq sections')")
             .arg(section, section_hint(section, main_key)));
  }
  view->set_value(place->name, value);
  view.reset();
  return check_writes(what);
}

int run_unset(const invocation& call) {
  int status = exit_ok;
  const std::optional<value_place> place = place_of(call, &status);
  if (!place) return status;
  const QString what = QStringLiteral("unset %1").arg(place->shown);
  const QString main_key = chosen_main_key(call);
  QVariant old;
  if (!open_view(main_key, place->group)->get_value(place->name, &old)) {
    return fail(what, absent_why(*place, main_key), exit_absent);
  }
  const QString cannot = unwritable_reason(settings_file_path());
  if (!cannot.isEmpty()) return fail(what, QStringLiteral("%1: %2").arg(settings_file_path(), cannot), exit_failed);
  if (const int migrated = migrate_before_write(call, what)) return migrated;
  auto view = open_view(main_key, place->group);
  // Removing a name removes the group of that name too; a group that shares the key's name is
  // written back.
  QList<std::pair<QString, QVariant>> group_values;
  if (view->childGroups().contains(place->name)) {
    view->beginGroup(place->name);
    for (const QString& key : view->allKeys()) group_values.append({key, view->value(key)});
    view->endGroup();
  }
  view->remove(place->name);
  for (const auto& [key, value] : group_values) view->set_value(place->name + QLatin1Char('/') + key, value);
  view.reset();
  return check_writes(what);
}

void add_keys_options(QCommandLineParser& parser) {
  add_listing_options(parser, QStringLiteral("Print the keys as a JSON array."));
  add_main_key_option(parser);
}

int run_keys(const invocation& call) {
  QString why;
  const std::optional<QString> section = resolve_section(call.args.at(0), &why);
  if (!section) return fail(call.command, why, exit_usage);
  if (const int status = check_settings_file(call.command); status != exit_ok) return status;
  const QString main_key = chosen_main_key(call);
  QStringList keys = open_view(main_key, *section)->allKeys();
  if (keys.isEmpty()) {
    return fail(QStringLiteral("keys %1").arg(*section), missing_section_why(*section, main_key),
                exit_absent);
  }
  keys.sort();
  switch (listing_of(call)) {
    case listing::json:
      print_bytes(QJsonDocument(QJsonArray::fromStringList(keys)).toJson(QJsonDocument::Compact) + '\n');
      break;
    case listing::nul:
      for (const QString& key : keys) print_bytes(key.toUtf8() + '\0');
      break;
    case listing::text:
    case listing::flat:  // keys has no --flat
      for (const QString& key : keys) print(key + QLatin1Char('\n'));
      break;
  }
  return exit_ok;
}

int run_clear(const invocation& call) {
  QString why;
  const std::optional<QString> section = resolve_section(call.args.at(0), &why);
  if (!section) return fail(call.command, why, exit_usage);
  const QString main_key = chosen_main_key(call);
  const QString what = QStringLiteral("clear %1").arg(*section);
  auto view = open_view(main_key, *section);
  qsizetype count = view->allKeys().size();
  if (count > 0) {
    const QString cannot = unwritable_reason(view->fileName());
    if (!cannot.isEmpty()) return fail(what, QStringLiteral("%1: %2").arg(view->fileName(), cannot), exit_failed);
    view.reset();
    if (const int migrated = migrate_before_write(call, what)) return migrated;
    view = open_view(main_key, *section);
    count = view->allKeys().size();
  }
  if (count == 0) {
    print(QStringLiteral("Nothing to clear: %1 holds no settings in %2.\n").arg(*section, main_key));
    return exit_ok;
  }
  view->clear_registry_key();
  view.reset();
  if (const int status = check_writes(what); status != exit_ok) return status;
  print(QStringLiteral("Removed %1 from %2/%3.\n")
            .arg(count_of(count, "value", "values"), main_key, *section));
  return exit_ok;
}

int run_sections(const invocation& call) {
  if (const int status = check_settings_file(call.command); status != exit_ok) return status;
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
       "the process's temporary file in test and headless runs (then a note on standard error\n"
       "says so: that file is removed when cfgq exits).",
       nullptr, run_path},
      {"show", "[SECTION] [--all] [--json | -z | --flat]", 0, 1, "the settings as a tree (--all: every main key)",
       "Shows the running version's settings (or one SECTION of them) as a tree: groups in\n"
       "[brackets], values as 'key = value'. Text is shown as it stands, or quoted when it has\n"
       "blanks at either end or line breaks or could pass for another type (it begins with [, {,\n"
       "@ or \"); lists and byte arrays in the JSON notation of 'cfgq export'; sizes, points,\n"
       "rectangles and dates as the file writes them, @Size(640 480); other typed values as\n"
       "@type(text). The migration marker Registry_version is not shown. On an empty profile it\n"
       "says that nothing is stored yet and where the file would be.\n"
       "--json prints the settings as one JSON object in the notation of 'cfgq export'; -z prints\n"
       "each value as its key path, a NUL, the value (text as it stands, others in the export\n"
       "notation) and a NUL; --flat prints one line per value, SECTION/KEY=VALUE (the key as the\n"
       "file stores it, the value as the tree shows it), for grep and diff; with --all each\n"
       "line begins with the main key. Exit status 1 when SECTION holds nothing.",
       add_show_options, run_show},
      {"get", "SECTION KEY [--json] [--default TEXT]", 2, 2, "one value (exit status 1 when absent)",
       "Prints one value: text as it stands, a list one item per line, a byte array as its\n"
       "raw bytes. KEY may reach below the section with \"/\" (Dialogs/Find/Width): levels\n"
       "before the last \"/\" are subgroups of the section and the last is the value's name,\n"
       "which only matches a value of that subgroup itself. Exit status 1 when it is not set,\n"
       "unless --default gives the text to print instead.",
       add_get_options, run_get},
      {"set", "SECTION KEY VALUE|- [--json] [--value-file FILE]", 2, 3, "write one value",
       "Writes VALUE as text under KEY in SECTION (KEY may reach into subgroups with \"/\").\n"
       "VALUE - reads the value from standard input, --value-file FILE from a file (UTF-8; one\n"
       "final line break is dropped). With --json, the value is in the JSON notation of\n"
       "'cfgq export': 640, true, [\"a\",\"b\"], {\"@bytes\": \"AAH/\"}. Put -- before a VALUE\n"
       "that begins with '-'.\n"
       "A value that would take the settings file past its 10,000,000-byte limit is refused\n"
       "(exit status 3; the message gives the room left). Writes to a version not migrated yet\n"
       "migrate it first, as a suite program does at its start, and say so on standard error\n"
       "(set, unset, clear and import alike); --no-migrate only marks it as migrated.",
       add_set_options, run_set},
      {"unset", "SECTION KEY", 2, 2, "remove one value",
       "Removes the value KEY of SECTION (KEY may reach into subgroups with \"/\", as for get);\n"
       "a subgroup of the same name stays. Exit status 1 when it is not set. A version not\n"
       "migrated yet is migrated first (see 'cfgq help set').",
       add_write_options, run_unset},
      {"keys", "SECTION [--json | -z]", 1, 1, "every key at or below a section",
       "Lists every key at or below SECTION, one per line, subgroups' keys as paths joined by\n"
       "\"/\"; --json prints them as a JSON array, -z ends each with a NUL instead (a key may\n"
       "hold a line break). Exit status 1 when the section holds nothing.",
       add_keys_options, run_keys},
      {"clear", "SECTION", 1, 1, "empty a section",
       "Removes every value at or below SECTION; other sections stay as they are. A version\n"
       "not migrated yet is migrated first (see 'cfgq help set').",
       add_write_options, run_clear},
      {"sections", "", 0, 0, "the section table and what each section holds",
       "Lists the section table: each enumerator, its group name in the file and how many\n"
       "values the main key holds in it; then any other groups of the main key.",
       add_main_key_option, run_sections},
  };
}

}  // namespace cli
