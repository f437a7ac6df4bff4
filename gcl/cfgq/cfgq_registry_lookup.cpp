// One-lookup reads of a group's own values.
#include "cfgq_registry_lookup.h"

#include <utility>

#include <QStringList>

namespace {

// Qt's INI keys ignore case on these platforms; a hit is then checked against the key's spelling.
#if defined(Q_OS_WIN) || defined(Q_OS_DARWIN)
constexpr bool qt_ini_keys_ignore_case = true;
#else
constexpr bool qt_ini_keys_ignore_case = false;
#endif

// No text form of these types comes near this many UTF-16 code units ("-1.7976931348623157e+308").
constexpr qsizetype short_text_utf16_units = 64;

// Stands for "no such key" in a lookup. Nobody outside this file can make a value of this type,
// so a stored value is never mistaken for it.
struct missing_value {};

}  // namespace

bool cfgq_find_own_value(const QSettings& settings, const QString& name, QVariant* found) {
  // The group's key list can hold "" (a line "=x" in the file), while Qt's lookups refuse an
  // empty name: ask the list, and read the value as the list-based lookup always did.
  if (name.isEmpty()) {
    if (!settings.childKeys().contains(name)) return false;
    *found = settings.value(name, QVariant());
    return true;
  }
  // Only the group's own keys count. Qt's lookups would drop a leading, trailing or doubled "/"
  // and reach into subgroups, while no own key holds a "/". A backslash needs nothing: in memory
  // it is an ordinary character, for the lookup and the key list alike (only the file's reader
  // turns "\" into "/").
  if (name.contains(QLatin1Char('/'))) return false;
  const QVariant missing = QVariant::fromValue(missing_value{});
  QVariant value = settings.value(name, missing);
  if (value.metaType() == missing.metaType()) {
    // Qt parses a file's sections when first asked, and a lookup parses the section that best
    // matches the key, while the key list parses the one that matches the group. They differ
    // only when a hand-written section is named after a subgroup ("[g/a]" beside "[g]"), and
    // then the group's own section may still be unread. A name that ends just after the group's
    // path ("g/" and a NUL) makes the lookup parse the group's section; then ask once more.
    // (A hit needs no such care: the section a lookup parses never holds an own key of the
    // group unless it is the group's section. Only a key written twice, in the group's section
    // and in a section named after a subgroup, may read its other copy.)
    settings.contains(QString(QChar(0)));
    value = settings.value(name, missing);
    if (value.metaType() == missing.metaType()) return false;
  }
  if (qt_ini_keys_ignore_case && !settings.childKeys().contains(name, Qt::CaseSensitive)) {
    return false;
  }
  *found = std::move(value);
  return true;
}

bool cfgq_text_reaches(const QVariant& value, qsizetype limit, qsizetype* length) {
  switch (value.typeId()) {
    case QMetaType::QString:
      // The text form of a text is the text itself.
      *length = static_cast<const QString*>(value.constData())->size();
      return *length >= limit;
    case QMetaType::QByteArray:
      // Decoding UTF-8 never gives more UTF-16 code units than there are bytes.
      if (static_cast<const QByteArray*>(value.constData())->size() < limit) return false;
      break;
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
      if (limit > short_text_utf16_units) return false;
      break;
    default:
      break;
  }
  *length = value.toString().size();
  return *length >= limit;
}
