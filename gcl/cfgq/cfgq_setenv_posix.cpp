// The persistent environment stores outside Windows: two files in environment.d format, read
// by the session manager's environment generator when a user's session starts.
//
// The files are read with the generator's own rules, so that what we see is what later programs
// get: lines of NAME=VALUE; "#" or ";" first on a line starts a comment (a backslash at its end
// carries it onto the next line); a value may be bare (a backslash escapes the next character,
// trailing blanks go), in single quotes (taken as is) or in double quotes (a backslash escapes
// \ " ` $ and a line break, other backslashes stay); quoted and bare pieces run together until
// the line ends; "$$" stands for "$"; the last assignment of a name wins; an assignment with an
// invalid name, an empty value or a value that is not UTF-8 is skipped. A "#" after a value is
// part of the value. References to other variables ($NAME, ${NAME}) are read as their literal
// text, and are stored as literal text when such a value is written back.
//
// Every value is written as NAME="..." with \ " ` escaped and "$" doubled: the generator expands
// "$" even inside quotes. A line break inside double quotes belongs to the value, so values with
// line breaks round-trip. The format has no empty value: writing one removes the variable.
#include "cfgq_setenv.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>

namespace {

const QString file_name = QStringLiteral("90-korvel.conf");
const QString system_file = QStringLiteral("/etc/environment.d/90-korvel.conf");

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_line_break(char c) { return c == '\n' || c == '\r'; }
bool is_whitespace(char c) { return is_blank(c) || is_line_break(c); }

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

bool is_utf8(const QByteArray& bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString ignored = decoder.decode(bytes);
  return !decoder.hasError();
}

// One NAME=VALUE assignment of a file, with the bytes it spans.
struct assignment {
  QByteArray name;      // blanks before "=" removed
  QByteArray value;     // quotes and escapes resolved; "$$" still doubled
  qsizetype begin = 0;  // the name's first byte
  qsizetype end = 0;    // one past the value: its line break, or the end of the file
  qsizetype line_begin = 0;  // after the previous line break: begin less leading blanks
  qsizetype line_end = 0;    // past the line break(s) that end the assignment
};

// Where the file's last byte leaves the reader, and so what an appended line needs.
enum class file_end {
  between_lines,  // a line may follow directly
  in_line,        // a dangling name or a comment: a line break must come first
  in_value,       // an unfinished value or a comment carried on: appending would join it
};

struct parsed_file {
  std::vector<assignment> assignments;
  file_end end = file_end::between_lines;
};

// The generator's reader, keeping byte positions. It never fails: every byte sequence is a
// file, odd lines are simply not assignments.
parsed_file parse(const QByteArray& bytes) {
  enum class state {
    pre_key, key, pre_value, value, value_escape, single_quote, double_quote,
    double_quote_escape, comment, comment_escape,
  };
  parsed_file result;
  state st = state::pre_key;
  assignment current;
  qsizetype key_blank_from = -1;    // where trailing blanks of the name start
  qsizetype value_blank_from = -1;  // where trailing blanks of a bare value start

  const auto finish = [&](qsizetype end, qsizetype line_end) {
    if (key_blank_from >= 0) current.name.truncate(key_blank_from);
    current.end = end;
    current.line_end = line_end;
    result.assignments.push_back(std::move(current));
    current = assignment();
  };
  // A "\r\n" pair ends one line; the "\n" would otherwise be left behind on removal.
  const auto line_end_after = [&](qsizetype i) {
    return bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n' ? i + 2 : i + 1;
  };

  for (qsizetype i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '\0') break;  // the generator reads up to the first NUL
    switch (st) {
      case state::pre_key:
        if (c == '#' || c == ';') {
          st = state::comment;
        } else if (!is_whitespace(c)) {
          st = state::key;
          current = assignment();
          current.begin = i;
          current.line_begin = i;
          while (current.line_begin > 0 && is_blank(bytes[current.line_begin - 1])) {
            --current.line_begin;
          }
          key_blank_from = -1;
          current.name.append(c);
        }
        break;
      case state::key:
        if (is_line_break(c)) {
          st = state::pre_key;  // a line without "=" is ignored
        } else if (c == '=') {
          st = state::pre_value;
        } else {
          if (!is_blank(c)) {
            key_blank_from = -1;
          } else if (key_blank_from < 0) {
            key_blank_from = current.name.size();
          }
          current.name.append(c);
        }
        break;
      case state::pre_value:
        if (is_line_break(c)) {
          st = state::pre_key;
          finish(i, line_end_after(i));
        } else if (c == '\'') {
          st = state::single_quote;
        } else if (c == '"') {
          st = state::double_quote;
        } else if (c == '\\') {
          st = state::value_escape;
        } else if (!is_blank(c)) {
          st = state::value;
          value_blank_from = -1;
          current.value.append(c);
        }
        break;
      case state::value:
        if (is_line_break(c)) {
          st = state::pre_key;
          if (value_blank_from >= 0) current.value.truncate(value_blank_from);
          finish(i, line_end_after(i));
        } else if (c == '\\') {
          st = state::value_escape;
          value_blank_from = -1;
        } else {
          if (!is_blank(c)) {
            value_blank_from = -1;
          } else if (value_blank_from < 0) {
            value_blank_from = current.value.size();
          }
          current.value.append(c);
        }
        break;
      case state::value_escape:
        st = state::value;
        value_blank_from = -1;
        if (!is_line_break(c)) current.value.append(c);  // an escaped line break joins lines
        break;
      case state::single_quote:
        if (c == '\'') {
          st = state::pre_value;
        } else {
          current.value.append(c);
        }
        break;
      case state::double_quote:
        if (c == '"') {
          st = state::pre_value;
        } else if (c == '\\') {
          st = state::double_quote_escape;
        } else {
          current.value.append(c);
        }
        break;
      case state::double_quote_escape:
        st = state::double_quote;
        if (c == '"' || c == '\\' || c == '`' || c == '$') {
          current.value.append(c);
        } else if (c != '\n') {
          current.value.append('\\');
          current.value.append(c);
        }
        break;
      case state::comment:
        if (c == '\\') {
          st = state::comment_escape;
        } else if (is_line_break(c)) {
          st = state::pre_key;
        }
        break;
      case state::comment_escape:
        st = state::comment;
        break;
    }
  }

  switch (st) {
    case state::pre_value:
    case state::value:
    case state::value_escape:
    case state::single_quote:
    case state::double_quote:
    case state::double_quote_escape:
      if (st == state::value && value_blank_from >= 0) current.value.truncate(value_blank_from);
      finish(bytes.size(), bytes.size());
      result.end = file_end::in_value;
      break;
    case state::pre_key:
      result.end = file_end::between_lines;
      break;
    case state::key:
    case state::comment:
      // A comment still open after the file's last line break was carried on by a backslash:
      // the next line would be part of it.
      result.end = st == state::comment && !bytes.isEmpty() && is_line_break(bytes.back())
                       ? file_end::in_value
                       : file_end::in_line;
      break;
    case state::comment_escape:
      result.end = file_end::in_value;
      break;
  }
  return result;
}

// The value the generator would hand on, or an empty text when the assignment doesn't count.
QByteArray effective_value(const assignment& a) {
  if (!is_valid_name(a.name) || a.value.isEmpty() || !is_utf8(a.value)) return QByteArray();
  QByteArray folded;
  folded.reserve(a.value.size());
  for (qsizetype i = 0; i < a.value.size(); ++i) {
    folded.append(a.value[i]);
    if (a.value[i] == '$' && i + 1 < a.value.size() && a.value[i + 1] == '$') ++i;
  }
  return folded;
}

// name -> value as the generator sees the file: the last counting assignment wins.
std::vector<std::pair<QByteArray, QByteArray>> variables(const parsed_file& file) {
  std::vector<std::pair<QByteArray, QByteArray>> result;
  for (const assignment& a : file.assignments) {
    const QByteArray value = effective_value(a);
    if (value.isEmpty()) continue;
    bool replaced = false;
    for (auto& [name, old_value] : result) {
      if (name == a.name) {
        old_value = value;
        replaced = true;
      }
    }
    if (!replaced) result.emplace_back(a.name, value);
  }
  return result;
}

QByteArray lookup(const parsed_file& file, const QByteArray& name) {
  for (const auto& [n, v] : variables(file)) {
    if (n == name) return v;
  }
  return QByteArray();
}

// Every variable of the file except `name`, in name order.
std::vector<std::pair<QByteArray, QByteArray>> others(const parsed_file& file,
                                                     const QByteArray& name) {
  std::vector<std::pair<QByteArray, QByteArray>> result = variables(file);
  result.erase(std::remove_if(result.begin(), result.end(),
                              [&](const auto& entry) { return entry.first == name; }),
               result.end());
  std::sort(result.begin(), result.end());
  return result;
}

// NAME="..." for the generator: it expands "$" even inside double quotes, so "$" is doubled
// rather than escaped.
QByteArray assignment_line(const QByteArray& name, const QByteArray& utf8_value) {
  QByteArray line = name + "=\"";
  for (const char c : utf8_value) {
    if (c == '\\' || c == '"' || c == '`') {
      line.append('\\');
      line.append(c);
    } else if (c == '$') {
      line.append("$$");
    } else {
      line.append(c);
    }
  }
  line.append('"');
  return line;
}

// The file with `name` set to `line` (nullptr: removed). Earlier assignments of the name are
// dropped and the last one is replaced in place, so the variable keeps its position; every other
// byte stays as it was.
QByteArray edited(const QByteArray& old_bytes, const parsed_file& old_file, const QByteArray& name,
                  const QByteArray* line) {
  std::vector<const assignment*> own;
  for (const assignment& a : old_file.assignments) {
    if (a.name == name) own.push_back(&a);
  }
  if (own.empty()) {
    if (line == nullptr) return old_bytes;
    switch (old_file.end) {
      case file_end::between_lines:
        return old_bytes + *line + '\n';
      case file_end::in_line:
        return old_bytes + '\n' + *line + '\n';
      case file_end::in_value:
        // Appended text would become part of the unfinished value or comment at the end.
        return *line + '\n' + old_bytes;
    }
    return old_bytes;
  }
  QByteArray bytes;
  qsizetype copied_to = 0;
  for (std::size_t k = 0; k < own.size(); ++k) {
    const assignment& a = *own[k];
    const bool last = k + 1 == own.size();
    if (last && line != nullptr) {
      bytes.append(old_bytes.mid(copied_to, a.begin - copied_to));
      bytes.append(*line);
      copied_to = a.end;  // the line break stays as it was
    } else {
      bytes.append(old_bytes.mid(copied_to, a.line_begin - copied_to));
      copied_to = a.line_end;
    }
  }
  bytes.append(old_bytes.mid(copied_to));
  return bytes;
}

cfgq_env::write_result refused(const QString& reason) {
  return {cfgq_env::write_outcome::refused, reason};
}

cfgq_env::write_result failed(const QString& why) {
  return {cfgq_env::write_outcome::failed, why};
}

}  // namespace

namespace cfgq_env {

QString store_location(store which) {
  if (which == store::system) {
    const QString override_path = qEnvironmentVariable("KORVEL_SYSTEM_ENV_FILE");
    return override_path.isEmpty() ? system_file : override_path;
  }
  const QString override_path = qEnvironmentVariable("KORVEL_USER_ENV_FILE");
  if (!override_path.isEmpty()) return override_path;
  // A relative XDG_CONFIG_HOME is invalid and ignored, as the session manager does.
  QString config_home = qEnvironmentVariable("XDG_CONFIG_HOME");
  if (config_home.isEmpty() || QDir::isRelativePath(config_home)) {
    config_home = QDir::homePath() + QStringLiteral("/.config");
  }
  return config_home + QStringLiteral("/environment.d/") + file_name;
}

QString store_read(const QString& location, const QString& name) {
  QFile file(location);
  if (!file.open(QIODevice::ReadOnly)) return QString();
  const QByteArray value = lookup(parse(file.readAll()), name.toUtf8());
  return QString::fromUtf8(value);
}

write_result store_write(const QString& location, const QString& name, const QString& text) {
  const QByteArray name_bytes = name.toUtf8();
  if (!is_valid_name(name_bytes)) {
    return refused(QStringLiteral("\"%1\" is not a variable name ([A-Za-z_][A-Za-z0-9_]*)")
                       .arg(name));
  }
  if (text.contains(QChar::Null)) return refused(QStringLiteral("the value holds a NUL"));
  // Unpaired surrogates have no UTF-8 form; the generator skips lines that are not UTF-8.
  if (!text.isValidUtf16()) return refused(QStringLiteral("the value is not valid Unicode"));

  QByteArray old_bytes;
  QFile old_file(location);
  if (old_file.exists()) {
    if (!old_file.open(QIODevice::ReadOnly)) return failed(old_file.errorString());
    old_bytes = old_file.readAll();
    old_file.close();
  }
  const parsed_file old_parsed = parse(old_bytes);
  const QByteArray value = text.toUtf8();
  const QByteArray line = assignment_line(name_bytes, value);
  const QByteArray new_bytes =
      edited(old_bytes, old_parsed, name_bytes, text.isEmpty() ? nullptr : &line);
  if (new_bytes == old_bytes) return {write_outcome::written, QString()};

  // A last check that the edit reads back as meant, whatever odd text the file held.
  const parsed_file new_parsed = parse(new_bytes);
  if (others(old_parsed, name_bytes) != others(new_parsed, name_bytes) ||
      lookup(new_parsed, name_bytes) != value) {
    return refused(QStringLiteral("the edited file would not read back as written"));
  }

  const QString directory = QFileInfo(location).absolutePath();
  if (!QDir().mkpath(directory)) {
    return failed(QStringLiteral("can't create the directory %1").arg(directory));
  }
  // Temporary file and rename in the same directory: a failure leaves the old file whole.
  QSaveFile file(location);
  if (!file.open(QIODevice::WriteOnly)) return failed(file.errorString());
  if (file.write(new_bytes) != new_bytes.size()) {
    const QString why = file.errorString();
    file.cancelWriting();
    return failed(why);
  }
  if (!file.commit()) return failed(file.errorString());
  return {write_outcome::written, QString()};
}

void announce_change_by_platform() {}

}  // namespace cfgq_env
