// How a view finds one of its group's own values, and measures a value's text, without listing
// the group or converting the value.
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

// True when `settings`, standing in its current group, holds the own (direct) key `name`, whose
// value then goes to *found. Agrees exactly with settings.childKeys().contains(name): case-
// sensitive, a name with "/" never matches. *found is untouched on a miss. One map lookup for a
// name that is there, three for one that is not, instead of listing the group (where Qt's INI
// keys ignore case, a name that is there is checked against the list).
bool cfgq_find_own_value(const QSettings& settings, const QString& name, QVariant* found);

// True when value.toString() has `limit` or more UTF-16 code units; its length then goes to
// *length. Values whose text is known to be shorter (numbers, or bytes fewer than `limit`, which
// never give more code units than bytes) are answered without converting them.
bool cfgq_text_reaches(const QVariant& value, qsizetype limit, qsizetype* length);
