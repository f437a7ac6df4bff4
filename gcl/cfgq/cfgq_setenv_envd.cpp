// The environment.d format: the generator's reader, element by element, and the writer's edits.
#include "cfgq_setenv_envd.h"

#include <QHash>

#include "cfgq_utf8.h"

namespace envd {
namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_line_break(char c) { return c == '\n' || c == '\r'; }
bool is_whitespace(char c) { return is_blank(c) || is_line_break(c); }

// Past the line break at `at`; "\r\n" counts as one, so that removing a line takes both.
qsizetype past_line_break(const QByteArray& bytes, qsizetype at) {
  return bytes[at] == '\r' && at + 1 < bytes.size() && bytes[at + 1] == '\n' ? at + 2 : at + 1;
}

// Drops trailing blanks: `from` is where they start, -1 when there are none.
void drop_blanks(QByteArray* text, qsizetype from) {
  if (from >= 0) text->truncate(from);
}

}  // namespace

bool is_valid_name(const QByteArray& name) {
  if (name.isEmpty()) return false;
  for (qsizetype i = 0; i < name.size(); ++i) {
    const char c = name[i];
    const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    const bool digit = c >= '0' && c <= '9';
    if (!letter && !(digit && i > 0)) return false;
  }
  return true;
}

qsizetype read_comment(const QByteArray& bytes, qsizetype at, int* open) {
  for (qsizetype i = at + 1; i < bytes.size(); ++i) {
    if (bytes[i] == '\\') {
      // The escaped byte, a line break too, belongs to the comment.
      if (++i == bytes.size()) {
        *open = 2;
        return i;
      }
    } else if (is_line_break(bytes[i])) {
      *open = 0;
      return i + 1;
    }
  }
  *open = 1;
  return bytes.size();
}

qsizetype read_name(const QByteArray& bytes, qsizetype at, QByteArray* name) {
  qsizetype blanks_from = -1;
  qsizetype i = at;
  for (; i < bytes.size() && bytes[i] != '=' && !is_line_break(bytes[i]); ++i) {
    if (!is_blank(bytes[i])) {
      blanks_from = -1;
    } else if (blanks_from < 0) {
      blanks_from = name->size();
    }
    name->append(bytes[i]);
  }
  drop_blanks(name, blanks_from);
  return i;
}

qsizetype read_bare(const QByteArray& bytes, qsizetype at, QByteArray* value, int* open) {
  qsizetype blanks_from = -1;
  qsizetype i = at;
  for (; i < bytes.size() && !is_line_break(bytes[i]); ++i) {
    const char c = bytes[i];
    if (c == '\\') {
      blanks_from = -1;
      if (++i == bytes.size()) {
        *open = 2;
        return i;
      }
      // An escaped line break joins the lines ("\r" too, so "\\\r\n" ends at the "\n").
      if (!is_line_break(bytes[i])) value->append(bytes[i]);
      continue;
    }
    if (!is_blank(c)) {
      blanks_from = -1;
    } else if (blanks_from < 0) {
      blanks_from = value->size();
    }
    value->append(c);
  }
  drop_blanks(value, blanks_from);
  *open = i < bytes.size() ? 0 : 1;
  return i;
}

qsizetype read_single_quoted(const QByteArray& bytes, qsizetype at, QByteArray* value,
                             bool* closed) {
  const qsizetype quote = bytes.indexOf('\'', at + 1);
  *closed = quote >= 0;
  const qsizetype end = *closed ? quote : bytes.size();
  value->append(bytes.mid(at + 1, end - at - 1));
  return *closed ? end + 1 : end;
}

qsizetype read_double_quoted(const QByteArray& bytes, qsizetype at, QByteArray* value,
                             bool* closed) {
  *closed = false;
  for (qsizetype i = at + 1; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '"') {
      *closed = true;
      return i + 1;
    }
    if (c != '\\') {
      value->append(c);
      continue;
    }
    if (++i == bytes.size()) break;
    const char escaped = bytes[i];
    if (escaped == '"' || escaped == '\\' || escaped == '`' || escaped == '$') {
      value->append(escaped);
    } else if (escaped != '\n') {
      value->append('\\');
      value->append(escaped);
    }
  }
  return bytes.size();
}

qsizetype read_value(const QByteArray& bytes, qsizetype at, QByteArray* value, int* open) {
  qsizetype i = at;
  while (i < bytes.size()) {
    const char c = bytes[i];
    if (is_line_break(c)) {
      *open = 0;
      return i;
    }
    if (is_blank(c)) {
      ++i;
    } else if (c == '\'' || c == '"') {
      bool closed = false;
      i = c == '\'' ? read_single_quoted(bytes, i, value, &closed)
                    : read_double_quoted(bytes, i, value, &closed);
      if (!closed) {
        *open = -1;
        return i;
      }
    } else {
      return read_bare(bytes, i, value, open);  // runs to the end of the line
    }
  }
  *open = 1;
  return i;
}

parsed_file parse(const QByteArray& bytes) {
  parsed_file file;
  file.nul_at = bytes.indexOf('\0');
  qsizetype i = 0;
  while (i < bytes.size()) {
    const char c = bytes[i];
    if (is_whitespace(c)) {
      ++i;
      continue;
    }
    if (c == '#' || c == ';') {
      i = read_comment(bytes, i, &file.breaks_needed);
      continue;
    }
    assignment a;
    a.begin = i;
    a.line_begin = i;
    while (a.line_begin > 0 && is_blank(bytes[a.line_begin - 1])) --a.line_begin;
    i = read_name(bytes, i, &a.name);
    if (i == bytes.size()) {
      file.breaks_needed = 1;  // a name without "=" ends the file
      break;
    }
    if (bytes[i] != '=') continue;  // a line without "=" is no assignment
    i = read_value(bytes, i + 1, &a.value, &file.breaks_needed);
    a.end = i;
    a.line_end = i < bytes.size() ? past_line_break(bytes, i) : i;
    if (file.bad_utf8_at < 0 && !cfgq_is_utf8(a.value)) file.bad_utf8_at = a.begin;
    i = a.line_end;
    file.assignments.push_back(std::move(a));
  }
  return file;
}

std::vector<std::pair<QByteArray, QByteArray>> variables(const parsed_file& file) {
  std::vector<std::pair<QByteArray, QByteArray>> result;
  QHash<QByteArray, std::size_t> position;  // name -> its entry in result
  for (const assignment& a : file.assignments) {
    if (!is_valid_name(a.name) || a.value.isEmpty() || !cfgq_is_utf8(a.value)) continue;
    const auto known = position.constFind(a.name);
    if (known != position.constEnd()) {
      result[*known].second = a.value;
    } else {
      position.insert(a.name, result.size());
      result.emplace_back(a.name, a.value);
    }
  }
  return result;
}

std::optional<QByteArray> lookup(const parsed_file& file, const QByteArray& name) {
  // The last counting assignment of the name.
  for (auto a = file.assignments.rbegin(); a != file.assignments.rend(); ++a) {
    if (a->name == name && is_valid_name(a->name) && !a->value.isEmpty() && cfgq_is_utf8(a->value)) {
      return a->value;
    }
  }
  return std::nullopt;
}

QByteArray quoted(const QByteArray& text) {
  QByteArray result;
  result.reserve(text.size() + 2);
  result.append('"');
  for (const char c : text) {
    if (c == '\\' || c == '"' || c == '`') result.append('\\');
    result.append(c);
  }
  result.append('"');
  return result;
}

QByteArray assignment_line(const QByteArray& name, const QByteArray& text) {
  return name + '=' + quoted(text);
}

std::optional<QByteArray> edited(const QByteArray& old_bytes, const parsed_file& old_file,
                                 const QByteArray& name, const QByteArray* line) {
  std::vector<const assignment*> own;
  for (const assignment& a : old_file.assignments) {
    if (a.name == name) own.push_back(&a);
  }
  if (own.empty()) {
    if (line == nullptr) return old_bytes;
    if (old_file.breaks_needed < 0) return std::nullopt;
    // A file written with "\r\n" gets them on the new line too.
    const QByteArray line_break = old_bytes.contains("\r\n") ? "\r\n" : "\n";
    return old_bytes + line_break.repeated(old_file.breaks_needed) + *line + line_break;
  }
  QByteArray bytes;
  qsizetype copied_to = 0;
  for (std::size_t k = 0; k < own.size(); ++k) {
    const assignment& a = *own[k];
    if (k + 1 == own.size() && line != nullptr) {
      bytes.append(old_bytes.mid(copied_to, a.begin - copied_to));
      bytes.append(*line);
      copied_to = a.end;  // its line break stays as it was
    } else {
      bytes.append(old_bytes.mid(copied_to, a.line_begin - copied_to));
      copied_to = a.line_end;
    }
  }
  bytes.append(old_bytes.mid(copied_to));
  return bytes;
}

// ---- Login forms -------------------------------------------------------------------------

namespace {

QByteArray reference(const QByteArray& name) { return "${" + name + "}"; }

bool is_separator(char c) { return c == ':' || c == ';'; }

}  // namespace

QByteArray login_default(const QByteArray& name) {
  // The base-directory conventions' defaults.
  if (name == "XDG_DATA_DIRS") return "/usr/local/share/:/usr/share/";
  if (name == "XDG_CONFIG_DIRS") return "/etc/xdg";
  return QByteArray();
}

bool extends_login_value(const QByteArray& name) {
  return !login_default(name).isEmpty() || name == "MANPATH";
}

QByteArray to_login_form(const QByteArray& name, const QByteArray& text) {
  const QByteArray plain = reference(name);
  if (!text.startsWith(plain) || text.size() < plain.size() + 2 || !is_separator(text.at(plain.size()))) {
    return text;
  }
  const char separator = text.at(plain.size());
  QByteArray items = text.mid(plain.size() + 1);
  if (name == "MANPATH" && !items.endsWith(separator)) items += separator;
  const QByteArray fallback = login_default(name);
  if (!fallback.isEmpty()) return "${" + name + ":-" + fallback + "}" + separator + items;
  return "${" + name + ":+" + plain + separator + "}" + items;
}

QByteArray from_login_form(const QByteArray& name, const QByteArray& text) {
  const QByteArray plus = "${" + name + ":+" + reference(name);
  const QByteArray fallback = "${" + name + ":-" + login_default(name) + "}";
  QByteArray list;
  if (text.startsWith(plus) && text.size() > plus.size() + 1 && is_separator(text.at(plus.size())) &&
      text.at(plus.size() + 1) == '}') {
    list = reference(name) + text.at(plus.size()) + text.mid(plus.size() + 2);
  } else if (!login_default(name).isEmpty() && text.startsWith(fallback)) {
    list = reference(name) + text.mid(fallback.size());
  } else if (text.startsWith(reference(name))) {
    list = text;
  } else {
    return text;
  }
  if (name == "MANPATH" && list.size() > reference(name).size() + 1 && is_separator(list.back())) list.chop(1);
  return list;
}

}  // namespace envd
