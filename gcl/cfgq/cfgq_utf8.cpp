// The library's one check of UTF-8 text, without decoding: a 10 MB file is checked in place.
#include "cfgq_utf8.h"

bool cfgq_is_utf8(const QByteArray& bytes) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData());
  const auto* end = p + bytes.size();
  while (p < end) {
    if (*p < 0x80) {
      ++p;
      continue;
    }
    int follow = 0;
    unsigned min = 0;
    unsigned code = 0;
    if ((*p & 0xE0) == 0xC0) {
      follow = 1, min = 0x80, code = *p & 0x1F;
    } else if ((*p & 0xF0) == 0xE0) {
      follow = 2, min = 0x800, code = *p & 0x0F;
    } else if ((*p & 0xF8) == 0xF0) {
      follow = 3, min = 0x10000, code = *p & 0x07;
    } else {
      return false;
    }
    if (end - p <= follow) return false;
    for (int i = 1; i <= follow; ++i) {
      if ((p[i] & 0xC0) != 0x80) return false;
      code = (code << 6) | (p[i] & 0x3F);
    }
    if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    p += follow + 1;
  }
  return true;
}
