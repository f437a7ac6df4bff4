// The JSON notation of settings values and groups (see export_format.h).
#include "export_format.h"

#include "cli.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QBuffer>
#include <QDataStream>
#include <QJsonArray>
#include <QJsonDocument>
#include <QDateTime>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>

namespace cli {
namespace {

const QString bytes_tag = QStringLiteral("@bytes");
const QString variant_tag = QStringLiteral("@variant");
const QString own_value_tag = QStringLiteral("@value");

// Fixed, so that an export reads back the same under a later Qt.
constexpr QDataStream::Version variant_stream_version = QDataStream::Qt_6_0;

// Text that Qt writes for a qint64, and that a JSON integer gives back unchanged, in every JSON
// reader: one beyond 2^53 would lose digits in those that read numbers as doubles, so it stays
// text (import writes the same text back).
bool is_integer_text(const QString& text, qint64* number) {
  static const QRegularExpression pattern(QStringLiteral("^-?(0|[1-9][0-9]*)$"));
  if (!pattern.match(text).hasMatch()) return false;
  bool ok = false;
  *number = text.toLongLong(&ok);
  constexpr qint64 exact = qint64(1) << 53;
  return ok && *number >= -exact && *number <= exact && QString::number(*number) == text;
}

// Text that Qt writes for a double with a fractional part. Integral doubles stay text: JSON
// would give them back as integers, which Qt writes differently ("1e+06" against "1000000").
bool is_fractional_double_text(const QString& text, double* number) {
  bool ok = false;
  *number = text.toDouble(&ok);
  return ok && std::isfinite(*number) && std::trunc(*number) != *number &&
         QString::number(*number, 'g', QLocale::FloatingPointShortest) == text;
}

QString escaped_member_name(const QString& name) {
  return name.startsWith(QLatin1Char('@')) ? QLatin1Char('@') + name : name;
}

QString join_path(const QString& prefix, const QString& name) {
  return prefix.isEmpty() ? name : prefix + QLatin1Char('/') + name;
}

// A one-member object whose member is a value tag is a value; any other object is a group.
bool is_tagged_value(const QJsonObject& object) {
  return object.size() == 1 &&
         (object.contains(bytes_tag) || object.contains(variant_tag));
}

bool group_from_json_below(const QJsonObject& group, const QString& prefix,
                           QList<settings_entry>* entries, QString* why) {
  for (auto member = group.begin(); member != group.end(); ++member) {
    const QString& raw_name = member.key();
    QString name;
    if (raw_name == own_value_tag) {
      // The group's own value: a key with the same name as this group.
      if (prefix.isEmpty()) {
        *why = QStringLiteral("\"@value\" at the top level names no key");
        return false;
      }
      QVariant value;
      if (!value_from_json(member.value(), &value, why)) {
        *why = QStringLiteral("%1: %2").arg(prefix, *why);
        return false;
      }
      entries->append({prefix, value});
      continue;
    }
    if (raw_name.startsWith(QLatin1String("@@"))) {
      name = raw_name.mid(1);
    } else if (raw_name.startsWith(QLatin1Char('@'))) {
      *why = QStringLiteral("%1: unknown tag \"%2\" (a name beginning with \"@\" is written "
                            "with \"@@\")")
                 .arg(prefix.isEmpty() ? QStringLiteral("settings") : prefix, raw_name);
      return false;
    } else {
      name = raw_name;
    }
    if (name.isEmpty() || name.contains(QLatin1Char('/'))) {
      *why = QStringLiteral("%1: a key or group name must be non-empty and without \"/\"")
                 .arg(join_path(prefix, QStringLiteral("\"%1\"").arg(name)));
      return false;
    }
    const QString path = join_path(prefix, name);
    if (member.value().isObject() && !is_tagged_value(member.value().toObject())) {
      if (!group_from_json_below(member.value().toObject(), path, entries, why)) return false;
      continue;
    }
    QVariant value;
    if (!value_from_json(member.value(), &value, why)) {
      *why = QStringLiteral("%1: %2").arg(path, *why);
      return false;
    }
    entries->append({path, value});
  }
  return true;
}

}  // namespace

QJsonValue value_to_json(const QVariant& value) {
  switch (value.metaType().id()) {
    case QMetaType::UnknownType:
      // What an empty list (and an invalid value) reads back as.
      return QJsonValue(QJsonValue::Null);
    case QMetaType::QString: {
      const QString text = value.toString();
      if (text == QLatin1String("true")) return true;
      if (text == QLatin1String("false")) return false;
      qint64 integer = 0;
      if (is_integer_text(text, &integer)) return integer;
      double number = 0;
      if (is_fractional_double_text(text, &number)) return number;
      return text;
    }
    case QMetaType::QStringList:
      return QJsonArray::fromStringList(value.toStringList());
    case QMetaType::QByteArray:
      return QJsonObject{{bytes_tag, QString::fromLatin1(value.toByteArray().toBase64())}};
    default: {
      // Typed values (sizes, points, dates, and numbers a file keeps in binary form) go through
      // QDataStream, so that they come back with their type.
      QByteArray data;
      QDataStream stream(&data, QIODevice::WriteOnly);
      stream.setVersion(variant_stream_version);
      stream << value;
      return QJsonObject{{variant_tag, QString::fromLatin1(data.toBase64())}};
    }
  }
}

bool value_from_json(const QJsonValue& json, QVariant* value, QString* why) {
  switch (json.type()) {
    case QJsonValue::Null:
      *value = QVariant();
      return true;
    case QJsonValue::Bool:
      *value = json.toBool();
      return true;
    case QJsonValue::Double: {
      const QVariant number = json.toVariant();
      if (number.metaType().id() == QMetaType::LongLong) {
        *value = json.toInteger();
      } else {
        *value = json.toDouble();
      }
      return true;
    }
    case QJsonValue::String:
      *value = json.toString();
      return true;
    case QJsonValue::Array: {
      QStringList items;
      for (const QJsonValue& item : json.toArray()) {
        if (!item.isString()) {
          *why = QStringLiteral("a list may only hold text items");
          return false;
        }
        items.append(item.toString());
      }
      *value = items;
      return true;
    }
    case QJsonValue::Object: {
      const QJsonObject object = json.toObject();
      if (!is_tagged_value(object)) {
        *why = QStringLiteral("an object here must be {\"@bytes\": ...} or {\"@variant\": ...}");
        return false;
      }
      const QString tag = object.begin().key();
      const QJsonValue payload = object.begin().value();
      const QByteArray::FromBase64Result decoded =
          payload.isString()
              ? QByteArray::fromBase64Encoding(payload.toString().toLatin1(),
                                               QByteArray::AbortOnBase64DecodingErrors)
              : QByteArray::FromBase64Result{};
      if (!payload.isString() || !decoded) {
        *why = QStringLiteral("%1 needs base64 text").arg(tag);
        return false;
      }
      if (tag == bytes_tag) {
        *value = *decoded;
        return true;
      }
      QDataStream stream(*decoded);
      stream.setVersion(variant_stream_version);
      QVariant typed;
      stream >> typed;
      if (stream.status() != QDataStream::Ok || !stream.atEnd() || !typed.isValid()) {
        *why = QStringLiteral("@variant does not hold a value this tool can read");
        return false;
      }
      *value = typed;
      return true;
    }
    case QJsonValue::Undefined:
      break;
  }
  *why = QStringLiteral("not a value");
  return false;
}

namespace {

constexpr int deepest_indent = 32;

QByteArray indentation(int level) { return QByteArray(4 * std::min(level, deepest_indent), ' '); }

// One member of a group's object: a value (a key of the group, or the group's own "@value") or
// a subgroup.
struct json_member {
  QString name;    // as written, "@" escaped
  QString source;  // the key or group name in the view
  bool group = false;
  // A value: it is "@value", the parent's key of this group's name. A group: the parent has a
  // key of its name, which it holds as "@value".
  bool own_value = false;
};

// A value's notation laid out as QJsonDocument's indented form, its inner lines at `level`.
QByteArray indented_value(const QJsonValue& json, int level) {
  // Qt lays out [value] with the value one level in; its lines are moved to `level`.
  const QByteArray wrapped = QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Indented);
  const QList<QByteArray> lines = wrapped.mid(2, wrapped.size() - 5).split('\n');
  QByteArray text;
  for (qsizetype i = 0; i < lines.size(); ++i) {
    if (i > 0) text += '\n' + indentation(level);
    text += lines[i].mid(4);
  }
  return text;
}

// The members of the view's current group, in QJsonObject's order (by name).
std::vector<json_member> members_of(settings_view& view, bool has_own_value,
                                    const QString& hidden_key) {
  std::vector<json_member> members;
  if (has_own_value) members.push_back({own_value_tag, QString(), false, true});
  const QStringList groups = view.childGroups();
  const QStringList keys = view.childKeys();
  const QSet<QString> group_names(groups.begin(), groups.end());
  const QSet<QString> key_names(keys.begin(), keys.end());
  for (const QString& key : keys) {
    // A key and a group may share a name in INI; the key's value moves into the group.
    if (key == hidden_key || group_names.contains(key)) continue;
    members.push_back({escaped_member_name(key), key, false, false});
  }
  for (const QString& group : groups) {
    // A key with an empty level (hand-edited) names a group no path can enter.
    if (group.isEmpty()) continue;
    members.push_back({escaped_member_name(group), group, true, key_names.contains(group)});
  }
  std::sort(members.begin(), members.end(),
            [](const json_member& a, const json_member& b) { return a.name < b.name; });
  return members;
}

}  // namespace

QByteArray group_json(settings_view& view, int indent, const QString& hidden_key) {
  struct level {
    std::vector<json_member> members;
    size_t next = 0;
    QVariant own_value;
  };
  std::vector<level> stack;
  stack.push_back({members_of(view, false, hidden_key), 0, QVariant()});
  QByteArray text = "{";
  while (!stack.empty()) {
    level& top = stack.back();
    const int depth = indent + static_cast<int>(stack.size()) - 1;
    if (top.next == top.members.size()) {
      text += '\n' + indentation(depth) + '}';
      stack.pop_back();
      if (!stack.empty()) view.endGroup();
      continue;
    }
    const json_member member = top.members[top.next];
    text += (top.next == 0 ? "\n" : ",\n") + indentation(depth + 1) + json_text(member.name).toUtf8() + ": ";
    ++top.next;
    if (!member.group) {
      const QVariant value = member.own_value ? top.own_value : view.value(member.source);
      text += indented_value(value_to_json(value), depth + 1);
      continue;
    }
    const QVariant own_value = member.own_value ? view.value(member.source) : QVariant();
    view.beginGroup(member.source);
    text += '{';
    stack.push_back({members_of(view, member.own_value, QString()), 0, own_value});
  }
  return text;
}

bool group_from_json(const QJsonObject& group, QList<settings_entry>* entries, QString* why) {
  return group_from_json_below(group, QString(), entries, why);
}

QString json_text(const QJsonValue& json) {
  // Wrapped in an array: QJsonDocument holds only arrays and objects.
  const QByteArray compact = QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Compact);
  return QString::fromUtf8(compact.mid(1, compact.size() - 2));
}

QString value_for_display(const QVariant& value) {
  switch (value.metaType().id()) {
    case QMetaType::QString: {
      const QString text = value.toString();
      // Text that could pass for a list, a byte array, a typed value or an empty list is quoted.
      bool plain = !text.isEmpty() && !text.front().isSpace() && !text.back().isSpace() &&
                   !QStringLiteral("\"[{@").contains(text.front()) && text != QLatin1String("null");
      for (const QChar c : text) plain = plain && c.isPrint();
      if (plain) return text;
      // Quoted the JSON way, so that blanks and line breaks can be seen.
      return json_text(text);
    }
    case QMetaType::UnknownType:
    case QMetaType::QStringList:
    case QMetaType::QByteArray:
      return json_text(value_to_json(value));
    case QMetaType::QSize: {
      const QSize size = value.toSize();
      return QStringLiteral("@Size(%1 %2)").arg(size.width()).arg(size.height());
    }
    case QMetaType::QPoint: {
      const QPoint point = value.toPoint();
      return QStringLiteral("@Point(%1 %2)").arg(point.x()).arg(point.y());
    }
    case QMetaType::QRect: {
      const QRect rect = value.toRect();
      return QStringLiteral("@Rect(%1 %2 %3 %4)").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
    }
    case QMetaType::QDateTime:
      return QStringLiteral("@DateTime(%1)").arg(value.toDateTime().toString(Qt::ISODateWithMs));
    case QMetaType::QDate:
      return QStringLiteral("@Date(%1)").arg(value.toDate().toString(Qt::ISODate));
    case QMetaType::QTime:
      return QStringLiteral("@Time(%1)").arg(value.toTime().toString(Qt::ISODateWithMs));
    default:
      break;
  }
  // Numbers and other values the file keeps in binary form: their type and text when Qt gives
  // one, else the export notation.
  const QString text = value.canConvert<QString>() ? value.toString() : QString();
  if (!text.isEmpty()) {
    return QStringLiteral("@%1(%2)").arg(QString::fromLatin1(value.metaType().name()), text);
  }
  return json_text(value_to_json(value));
}

}  // namespace cli
