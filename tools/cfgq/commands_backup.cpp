// Commands that back up and restore settings as JSON: export, import.
#include <algorithm>
#include <cstdio>

#include <QFile>
#include <QLocale>
#include <QJsonDocument>
#include <QJsonParseError>

#include "cli.h"
#include "export_format.h"

namespace cli {
namespace {

const QString stdio_name = QStringLiteral("-");

void add_export_options(QCommandLineParser& parser) {
  parser.addOption({{QStringLiteral("o"), QStringLiteral("output")},
                    QStringLiteral("Write to FILE (atomically) instead of standard output."),
                    QStringLiteral("FILE")});
  add_main_key_option(parser);
}

int run_export(const invocation& call) {
  std::optional<QString> section;
  if (!call.args.isEmpty()) {
    QString why;
    section = resolve_section(call.args.at(0), &why);
    if (!section) return fail(call.command, why, exit_usage);
  }
  if (const int status = check_settings_file(call.command); status != exit_ok) return status;
  const QString main_key = chosen_main_key(call);
  // A mistyped name would give an empty export, and a good backup would be replaced by it.
  const QStringList main_keys = open_root()->childGroups();
  if (main_key != running_main_key() && !main_keys.contains(main_key)) {
    const QString nearest = nearest_name(main_key, main_keys);
    return fail(call.command,
                QStringLiteral("the settings file holds no main key '%1'%2 (see 'cfgq show --all')")
                    .arg(main_key, nearest.isEmpty() ? QString() : QStringLiteral(" (did you mean '%1'?)").arg(nearest)),
                exit_usage);
  }
  if (section && !section_known(*section, main_key)) {
    return fail(call.command,
                QStringLiteral("no section '%1' in %2%3")
                    .arg(*section, main_key, section_hint(*section, main_key).isEmpty()
                                                 ? QStringLiteral(" (see 'cfgq sections')")
                                                 : section_hint(*section, main_key)),
                exit_usage);
  }
  auto view = open_view(main_key, section.value_or(QString()));
  // Laid out as QJsonDocument's indented form; the settings are written by a walk that any
  // depth of groups leaves intact.
  QByteArray json = "{\n    \"cfgq_export\": " + QByteArray::number(export_format_version) +
                    ",\n    \"main_key\": " + json_text(main_key).toUtf8() + ",\n";
  if (section) json += "    \"section\": " + json_text(*section).toUtf8() + ",\n";
  json += "    \"settings\": " + group_json(*view, 1) + "\n}\n";

  const QString output = call.options.value(QStringLiteral("output"));
  if (output.isEmpty() || output == stdio_name) {
    print_bytes(json);
  } else {
    QString why;
    if (!write_file_atomically(output, json, &why)) {
      return fail(call.command, QStringLiteral("%1: %2").arg(output, why), exit_failed);
    }
  }
  if (view->allKeys().isEmpty()) {
    note(QStringLiteral("note: %1 holds no settings; the export is empty")
             .arg(section ? main_key + QLatin1Char('/') + *section : main_key));
  }
  return exit_ok;
}

// Reads an export, up to a bound that no export of a settings file within its size limit
// reaches, so that an endless input (/dev/zero, a stream that never ends) stops there. False with
// *why (*too_large set when the input went past the limit).
bool read_input(const QString& name, QByteArray* bytes, QString* why, bool* too_large) {
  // JSON quotes and escapes, so an export may be larger than the file it came from, but never
  // four times larger.
  const qint64 limit = 4 * max_file_bytes;
  if (name == stdio_name) {
    if (!read_standard_input(limit, bytes, why)) return false;
  } else {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
      *why = file.errorString();
      return false;
    }
    // A pipe gives what it holds at each read: read on until its end or past the bound.
    bytes->clear();
    for (;;) {
      const QByteArray chunk = file.read(std::min<qint64>(limit + 1 - bytes->size(), 1 << 20));
      if (chunk.isEmpty()) break;
      bytes->append(chunk);
      if (bytes->size() > limit) break;
    }
    if (bytes->size() <= limit && file.error() != QFileDevice::NoError) {
      *why = file.errorString();
      return false;
    }
  }
  if (bytes->size() > limit) {
    *too_large = true;
    const QLocale english(QLocale::English);
    *why = QStringLiteral("more than %1 bytes: no export of a settings file within its "
                          "%2-byte limit is that large")
               .arg(english.toString(limit), english.toString(max_file_bytes));
    return false;
  }
  return true;
}

// The object `path` (levels joined by "/") names inside a settings object; null when absent.
std::optional<QJsonObject> subgroup_of(QJsonObject group, const QString& path) {
  for (const QString& level : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
    const QString member = level.startsWith(QLatin1Char('@')) ? QLatin1Char('@') + level : level;
    const QJsonValue inner = group.value(member);
    if (!inner.isObject()) return std::nullopt;
    group = inner.toObject();
  }
  return group;
}

int run_import(const invocation& call) {
  const QString name = call.args.at(0);
  const QString what = QStringLiteral("import %1").arg(name);
  std::optional<QString> section;
  if (call.args.size() > 1) {
    QString why;
    section = resolve_section(call.args.at(1), &why);
    if (!section) return fail(what, why, exit_usage);
  }

  QByteArray bytes;
  QString why;
  bool too_large = false;
  if (!read_input(name, &bytes, &why, &too_large)) {
    return fail(what, why, too_large ? exit_usage : exit_failed);
  }
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError) {
    return fail(what, QStringLiteral("not valid JSON: %1 at offset %2").arg(error.errorString()).arg(error.offset),
                exit_usage);
  }
  const QJsonObject top = document.object();
  const int format = top.value(QStringLiteral("cfgq_export")).toInt(-1);
  if (document.isObject() && format > export_format_version) {
    return fail(what,
                QStringLiteral("made by a newer cfgq (export format %1; this cfgq reads format %2)")
                    .arg(format)
                    .arg(export_format_version),
                exit_usage);
  }
  if (!document.isObject() || top.value(QStringLiteral("cfgq_export")).toInt(-1) != export_format_version ||
      !top.value(QStringLiteral("settings")).isObject()) {
    return fail(what,
                QStringLiteral("not a cfgq export (expected {\"cfgq_export\": 1, \"settings\": {...}})"),
                exit_usage);
  }
  const QJsonValue exported_section = top.value(QStringLiteral("section"));
  if (!exported_section.isUndefined() &&
      (!exported_section.isString() || !resolve_section(exported_section.toString(), &why))) {
    return fail(what, QStringLiteral("\"section\" must name a section"), exit_usage);
  }

  // A section export goes back to its own section, or to SECTION; of a whole main key's export,
  // SECTION picks that section.
  QJsonObject settings = top.value(QStringLiteral("settings")).toObject();
  QString target;
  if (exported_section.isString()) {
    target = section.value_or(*resolve_section(exported_section.toString(), &why));
  } else if (section) {
    const std::optional<QJsonObject> picked = subgroup_of(settings, *section);
    if (!picked) return fail(what, QStringLiteral("holds no section '%1'").arg(*section), exit_absent);
    settings = *picked;
    target = *section;
  }

  QList<settings_entry> entries;
  if (!group_from_json(settings, &entries, &why)) return fail(what, why, exit_usage);

  const QString main_key = chosen_main_key(call);
  const QString file = settings_file_path();
  const QString cannot = unwritable_reason(file);
  if (!cannot.isEmpty()) return fail(what, QStringLiteral("%1: %2").arg(file, cannot), exit_failed);
  // The library keeps the old value of one it refuses; say which ones those were.
  QStringList refused;
  pending_writes writes;
  const QString prefix = target.isEmpty() ? main_key + QLatin1Char('/') : main_key + QLatin1Char('/') + target + QLatin1Char('/');
  for (const settings_entry& entry : entries) {
    if (cfgq_value_too_large(entry.value.toString().size())) {
      refused.append(entry.path);
    } else {
      writes.append({prefix + entry.path, entry.value});
    }
  }
  if (const int migrated = migrate_before_write(call, what)) return migrated;
  if (const int checked = check_room(what, writes)) return checked;
  auto view = open_view(main_key, target);
  for (const auto& [path, value] : writes) view->set_value(path.mid(prefix.size()), value);
  const qsizetype written = writes.size();
  view.reset();
  if (const int status = check_writes(what); status != exit_ok) return status;
  const QString place = target.isEmpty() ? main_key : main_key + QLatin1Char('/') + target;
  print(QStringLiteral("Imported into %1: %2 written, %3 refused.\n")
            .arg(place, count_of(written, "value", "values"))
            .arg(refused.size()));
  if (!refused.isEmpty()) {
    print(QStringLiteral("Refused (text form of 10,000,000 or more UTF-16 code units; the old "
                         "value stays): %1\n")
              .arg(listed_names(refused)));
  }
  return exit_ok;
}

}  // namespace

std::vector<command> backup_commands() {
  return {
      {"export", "[SECTION] [--output FILE]", 0, 1, "back up the settings (or one section) as JSON",
       "Writes the running version's settings (or one SECTION of them) as JSON:\n"
       "  {\"cfgq_export\": 1, \"main_key\": \"25.1_pro\", \"section\": \"General\",\n"
       "   \"settings\": {\"Show_tips\": \"Yes\", \"Width\": 640, \"Docked\": true,\n"
       "                \"Recent\": [\"a.kpf\", \"b.kpf\"], \"State\": {\"@bytes\": \"AAH/\"},\n"
       "                \"Size\": {\"@variant\": \"...\"}, \"Dialogs\": {\"Find\": {\"Width\": 300}},\n"
       "                \"Cleared_list\": null}}\n"
       "(\"section\" only in a section's export.) Groups are objects. Text is a string, except\n"
       "that text Qt writes for an integer, a fractional double or a boolean is a JSON number or\n"
       "boolean (import writes back the same text); string lists are arrays; byte arrays are\n"
       "{\"@bytes\": base64}; other typed values are {\"@variant\": base64 of their QDataStream\n"
       "form}; an empty list reads back as null. A member name beginning with \"@\" gets one more\n"
       "\"@\"; \"@value\" inside a group holds a key of the same name as that group.\n"
       "A SECTION that is neither in the section table nor holds values, and a --main-key the\n"
       "file does not hold, are refused (exit status 2), so a typo never replaces a backup;\n"
       "--output replaces FILE only with the complete export (a temporary file beside it,\n"
       "every write checked, then renamed over it).",
       add_export_options, run_export},
      {"import", "FILE [SECTION]", 1, 2, "restore settings from a JSON export (merging)",
       "Merges an export (FILE, or - for standard input) into the running version's settings:\n"
       "values in the file are written, values not in it stay. A section's export goes back to\n"
       "its section, or to SECTION when given; from a whole main key's export, SECTION picks one\n"
       "section. Reports how many values were written and which ones the size limit refused\n"
       "(text form of 10,000,000 or more UTF-16 code units). Nothing is written when the file is\n"
       "not valid JSON or not an export (exit status 2), nor when the values would take the\n"
       "settings file past its 10,000,000-byte limit (exit status 3). A version not migrated\n"
       "yet is migrated first (see 'cfgq help set').",
       add_write_options, run_import},
  };
}

}  // namespace cli
