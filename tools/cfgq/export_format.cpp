// The JSON notation of settings values and groups (see export_format.h).
#include "export_format.h"

#include <cmath>

#include <QBuffer>
#include <QDataStream>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStringList>

namespace cli {
namespace {

const QString bytes_tag = QStringLiteral("@bytes");
const QString variant_tag = QStringLiteral("@variant");
const QString own_value_tag = QStringLiteral("@value");

// Fixed, so that an export reads back the same under a later Qt.
constexpr QDataStream::Version variant_stream_version = QDataStream::Qt_6_0;

// Text that Qt writes for a qint64, and that a JSON integer gives back unchanged.
bool is_integer_text(const QString& text, qint64* number) {
  static const QRegularExpression pattern(QStringLiteral("^-?(0|[1-9][0-9]*)$"));
  if (!pattern.match(text).hasMatch()) return false;
  bool ok = false;
  *number = text.toLongLong(&ok);
  return ok && QString::number(*number) == text;
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

QJsonObject group_to_json(CFGQ_REGISTRY_KEY& view) {
  QJsonObject object;
  const QStringList keys = view.childKeys();
  for (const QString& key : keys) {
    object.insert(escaped_member_name(key), value_to_json(view.value(key)));
  }
  for (const QString& group : view.childGroups()) {
    view.beginGroup(group);
    QJsonObject inner = group_to_json(view);
    view.endGroup();
    const QString member = escaped_member_name(group);
    // A key and a group may share a name in INI; the key's value moves into the group.
    if (keys.contains(group)) inner.insert(own_value_tag, object.take(member));
    object.insert(member, inner);
  }
  return object;
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
  if (value.metaType().id() == QMetaType::QString) {
    const QString text = value.toString();
    bool plain = !text.isEmpty() && !text.front().isSpace() && !text.back().isSpace() &&
                 !text.startsWith(QLatin1Char('"'));
    for (const QChar c : text) plain = plain && c.isPrint();
    if (plain) return text;
    // Quoted the JSON way, so that blanks and line breaks can be seen.
    return json_text(text);
  }
  return json_text(value_to_json(value));
}

}  // namespace cli
