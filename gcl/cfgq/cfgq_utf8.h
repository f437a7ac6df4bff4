// The library's one check of UTF-8 text.
// May use: nothing of the library (Qt and the standard library only).
#pragma once

#include <QByteArray>

// True when `bytes` are well-formed UTF-8: no stray or missing continuation bytes, no overlong
// forms, no surrogates, nothing beyond U+10FFFF.
bool cfgq_is_utf8(const QByteArray& bytes);
