// Windows side of the stand-ins: the Win32 headers, and the conversions between the UTF-8 text
// the stand-ins take and give and the UTF-16 text the system's wide calls take and give.
#pragma once

#include <string>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

// Converts UTF-8 text. False, with `wide` unchanged, when the text is not valid UTF-8 or holds a
// NUL (no system call could name it).
inline bool utf8_to_wide(const std::string& text, std::wstring* wide) {
  if (text.find('\0') != std::string::npos) return false;
  if (text.empty()) {
    wide->clear();
    return true;
  }
  const int size = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
  if (units <= 0) return false;
  std::wstring converted(static_cast<size_t>(units), L'\0');
  if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, converted.data(),
                          units) != units) {
    return false;
  }
  *wide = std::move(converted);
  return true;
}

// Converts UTF-16 text; an unpaired surrogate becomes U+FFFD.
inline std::string wide_to_utf8(const std::wstring& wide) {
  if (wide.empty()) return std::string();
  const int size = static_cast<int>(wide.size());
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0) return std::string();
  std::string text(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), bytes, nullptr, nullptr);
  return text;
}
