// The JSON notation of settings that `cfgq export` writes and `cfgq import` reads, also used by
// `show`, `get --json` and `set --json`. The README's "Export format" gives the same rules:
//
//   {"cfgq_export": 1, "main_key": "25.1_pro", "section": "General",   (section: only for one)
//    "settings": {"Show_tips": "Yes", "Width": 640, "Docked": true,
//                 "Recent": ["a.kpf", "b.kpf"], "State": {"@bytes": "AAH/"},
//                 "Size": {"@variant": "<QDataStream of the QVariant, base64>"},
//                 "Dialogs": {"Find": {"Width": 300}}, "Empty_list": null}}
//
// INI keeps numbers and booleans as text: text that Qt writes for an integer, a double or a
// boolean is shown as a JSON number or boolean, and import writes it back as that same text.
// Groups are objects; a member name that begins with "@" is written with one more "@" in front,
// so "@bytes", "@variant" and "@value" (a key that shares its name with a group) stay reserved.
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QVariant>

#include "cfgq.h"

namespace cli {

constexpr int export_format_version = 1;

class settings_view;  // cli.h

// One value and its key path below the place an import writes to.
struct settings_entry {
  QString path;  // levels joined by "/"
  QVariant value;
};

// The JSON notation of one value as a settings file gives it back.
QJsonValue value_to_json(const QVariant& value);
// The value that a JSON notation stands for. False, with *why, for a notation the format does
// not allow (an array item that is not text, bad base64, an unknown "@" tag, ...).
bool value_from_json(const QJsonValue& json, QVariant* value, QString* why);

// Every value at or below the view's current group as the text of a JSON object, laid out as
// QJsonDocument's indented form with the object's closing brace at `indent` levels (the view ends
// where it started). The walk keeps its place on the heap, so any depth works; members deeper
// than 32 levels are indented as the 32nd. `hidden_key`, when not empty, leaves out that key of
// the group itself.
QByteArray group_json(settings_view& view, int indent, const QString& hidden_key = QString());
// The values of a group object, flattened to key paths below it, in order. False, with *why
// naming the offending path, when a member is not a valid notation.
bool group_from_json(const QJsonObject& group, QList<settings_entry>* entries, QString* why);

// The compact JSON text of one value's notation: ["a","b"], {"@bytes":"AAH/"}, 640.
QString json_text(const QJsonValue& json);

// A short one-line rendering for `show`: plain text as it stands unless it needs quoting (blanks
// at either end, control characters, empty, or text that reads like a list, a notation or a
// typed value); sizes, points, rectangles, dates and numbers kept in binary form as the file
// writes the first ones, "@Size(640 480)"; lists and byte arrays in the JSON notation.
QString value_for_display(const QVariant& value);

}  // namespace cli
