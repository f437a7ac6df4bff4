// The recover command: lists the copies of the settings file that were set aside, and merges
// the running version's values from one of them back into the live file.
#include <algorithm>

#include <QDataStream>
#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <QSettings>

#include "cli.h"

namespace cli {
namespace {

// Suffixes of set-aside copies: too large to open, failed to load, read with format errors;
// and the copy `reset` keeps.
const char* const set_aside_suffixes[] = {cfgq_large_suffix, cfgq_corrupt_suffix,
                                          cfgq_format_error_suffix, reset_copy_suffix};

// What a raw settings object finds in a set-aside copy. It is not the live file, so the view's
// size check and recovery don't apply; a copy that makes QSettings throw is reported unreadable.
struct copy_contents {
  bool readable = false;
  QStringList main_keys;
  qsizetype running_values = 0;  // values under the running version's main key
};

copy_contents contents_of(const QString& path, const QString& main_key) {
  copy_contents contents;
  try {
    QSettings raw(path, QSettings::IniFormat);
    contents.main_keys = raw.childGroups();
    raw.beginGroup(main_key);
    contents.running_values = raw.allKeys().size();
    contents.readable = true;
  } catch (...) {
    contents.readable = false;
  }
  return contents;
}

QString bytes_text(qint64 bytes) {
  return QLocale(QLocale::English).toString(bytes) + QStringLiteral(" bytes");
}

// ---- Written size of a value --------------------------------------------------------------
// An upper bound of the bytes QSettings writes for one "key=value" line of an INI file, so that
// a merge can stop before the file crosses max_file_bytes. It follows the INI escapes closely
// (tests check the bound on text that escapes heavily), so a merge brings back nearly as much
// as fits.

bool is_hex_digit(char16_t u) {
  return (u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F');
}

bool has_short_escape(char16_t u) {
  return u == '\a' || u == '\b' || u == '\f' || u == '\n' || u == '\r' || u == '\t' ||
         u == '\v' || u == '"' || u == '\\';
}

qint64 escaped_key_bytes(const QString& key) {
  qint64 bytes = 0;
  for (const QChar c : key) {
    const char16_t u = c.unicode();
    const bool plain = (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') ||
                       u == '_' || u == '-' || u == '.' || u == '/';
    // Others are percent-encoded: "%3D" up to U+00FF, "%U65E5" beyond.
    bytes += plain ? 1 : u < 0x100 ? 3 : 6;
  }
  return bytes;
}

// Counts the characters of one escaped text. A hexadecimal escape ("\x1f") makes the hex
// digits right after it escaped too ("\x61"), until another character comes.
class escaped_size {
 public:
  // One UTF-16 code unit of text: non-ASCII text is written as UTF-8.
  void add_text_unit(char16_t u) {
    if (u >= 0x80) {
      add_plain(u < 0x800 || QChar::isSurrogate(u) ? 2 : 3);
    } else {
      add_ascii(u);
    }
  }

  // One byte of a byte array: bytes outside printable ASCII are hexadecimal escapes.
  void add_byte(unsigned char b) {
    if (b >= 0x7f) {
      add_hex_escape();
    } else {
      add_ascii(b);
    }
  }

  // Quotes around text with blanks at either end, "=", "," or ";", and the separators of a list.
  qint64 bytes() const { return m_bytes + 2; }

 private:
  void add_ascii(char16_t u) {
    if (has_short_escape(u)) {
      add_plain(2);
    } else if (u < 0x20 || u == 0x7f) {
      add_hex_escape();
    } else if (m_after_hex_escape && is_hex_digit(u)) {
      m_bytes += 4;
    } else {
      add_plain(1);
    }
  }
  void add_hex_escape() {
    m_bytes += 4;
    m_after_hex_escape = true;
  }
  void add_plain(qint64 bytes) {
    m_bytes += bytes;
    m_after_hex_escape = false;
  }

  qint64 m_bytes = 0;
  bool m_after_hex_escape = false;
};

qint64 escaped_text_bytes(const QString& text) {
  escaped_size size;
  for (const QChar c : text) size.add_text_unit(c.unicode());
  return size.bytes();
}

qint64 escaped_bytes_bytes(const QByteArray& bytes) {
  escaped_size size;
  for (const char b : bytes) size.add_byte(static_cast<unsigned char>(b));
  return size.bytes();
}

qint64 escaped_value_bytes(const QVariant& value) {
  switch (value.metaType().id()) {
    case QMetaType::UnknownType:
      return 10;  // @Invalid()
    case QMetaType::QString:
      return escaped_text_bytes(value.toString()) + 1;  // a leading "@" is doubled
    case QMetaType::QStringList: {
      qint64 bytes = 10;  // an empty list is @Invalid()
      for (const QString& item : value.toStringList()) bytes += escaped_text_bytes(item) + 2;
      return bytes;
    }
    case QMetaType::QByteArray:
      return escaped_bytes_bytes(value.toByteArray()) + 12;  // @ByteArray()
    default: {
      // @Variant(...) holds the QDataStream form; @Size(800 600) and kin are shorter.
      QByteArray data;
      QDataStream stream(&data, QIODevice::WriteOnly);
      stream << value;
      return escaped_bytes_bytes(data) + 10;
    }
  }
}

}  // namespace

// Bytes of the line "key=value\n" below `main_key` (its "[main key]" header counted apart).
qint64 line_bytes(const QString& path_in_main_key, const QVariant& value) {
  return escaped_key_bytes(path_in_main_key) + 1 + escaped_value_bytes(value) + 1;
}

namespace {

// An upper bound of the live file's size once QSettings has written it again.
qint64 written_size(settings_view& root, const QString& file_path) {
  qint64 bytes = 0;
  for (const QString& key : root.allKeys()) {
    // A top-level group is an INI section: its keys are written without its name.
    const bool in_group = key.contains(QLatin1Char('/'));
    bytes += line_bytes(in_group ? key.section(QLatin1Char('/'), 1) : key, root.value(key));
  }
  for (const QString& group : root.childGroups()) bytes += escaped_key_bytes(group) + 4;
  return std::max(bytes + 12, QFileInfo(file_path).size());  // 12: a "[General]" header
}

int list_copies(const QString& live, const QString& main_key) {
  bool any = false;
  for (const char* suffix : set_aside_suffixes) {
    const QFileInfo copy(live + QLatin1String(suffix));
    if (!copy.exists()) continue;
    if (!any) print(QStringLiteral("Set-aside copies of %1:\n").arg(live));
    any = true;
    const copy_contents contents = contents_of(copy.filePath(), main_key);
    print(QStringLiteral("  %1\n    %2, %3\n")
              .arg(copy.filePath(), bytes_text(copy.size()),
                   copy.lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm"))));
    if (!contents.readable) {
      print(QStringLiteral("    unreadable\n"));
    } else if (contents.main_keys.isEmpty()) {
      print(QStringLiteral("    holds no settings\n"));
    } else {
      QStringList shown;
      for (const QString& key : contents.main_keys) {
        shown.append(key == main_key ? QStringLiteral("%1 (running version, %2)")
                                           .arg(key, count_of(contents.running_values, "value", "values"))
                                     : key);
      }
      print(QStringLiteral("    main keys: %1\n").arg(shown.join(QStringLiteral(", "))));
    }
  }
  if (!any) {
    print(QStringLiteral("No set-aside copies beside %1 (none ending in .large, .corrupt, "
                         ".format-error or .reset).\n")
              .arg(live));
  }
  return exit_ok;
}

// The copy a --merge argument names: a path, or a kind ("large", ".corrupt", ...).
QString copy_named(const QString& argument, const QString& live) {
  for (const char* suffix : set_aside_suffixes) {
    const QString kind = QLatin1String(suffix);
    if (argument == kind || argument == kind.mid(1)) return live + kind;
  }
  return argument;
}

int merge_copy(const QString& argument, const QString& main_key) {
  const QString live = settings_file_path();
  const QString source_path = copy_named(argument, live);
  const QString what = QStringLiteral("recover --merge %1").arg(source_path);
  const QFileInfo source(source_path);
  if (!source.isFile()) return fail(what, QStringLiteral("no such file"), exit_usage);
  if (source.canonicalFilePath() == QFileInfo(live).canonicalFilePath()) {
    return fail(what, QStringLiteral("this is the live settings file"), exit_usage);
  }
  const QString cannot = unwritable_reason(live);
  if (!cannot.isEmpty()) return fail(what, QStringLiteral("%1: %2").arg(live, cannot), exit_failed);

  std::unique_ptr<QSettings> raw;
  try {
    raw = std::make_unique<QSettings>(source_path, QSettings::IniFormat);
  } catch (...) {
    return fail(what, QStringLiteral("the file can't be read"), exit_failed);
  }
  raw->beginGroup(main_key);
  QStringList keys = raw->allKeys();
  if (keys.isEmpty()) {
    return fail(what, QStringLiteral("holds no settings for %1").arg(main_key), exit_absent);
  }
  keys.sort();

  auto root = open_root();
  qint64 size = written_size(*root, live);
  if (!root->childGroups().contains(main_key)) size += escaped_key_bytes(main_key) + 4;
  root->beginGroup(main_key);

  QStringList restored, kept, refused, left_out;
  for (const QString& key : keys) {
    if (root->contains(key)) {
      // Written after the copy was set aside, so newer: the live value stays.
      kept.append(key);
      continue;
    }
    const QVariant value = raw->value(key);
    if (cfgq_value_too_large(value.toString().size())) {
      refused.append(key);
      continue;
    }
    const qint64 bytes = line_bytes(key, value);
    if (cfgq_over_file_limit(size + bytes)) {
      left_out.append(key);
      continue;
    }
    root->set_value(key, value);
    size += bytes;
    restored.append(key);
  }
  root.reset();
  if (const int status = check_writes(what); status != exit_ok) return status;

  print(QStringLiteral("Merged %1 of %2 into %3:\n").arg(main_key, source_path, live));
  print(QStringLiteral("  restored: %1\n").arg(count_of(restored.size(), "value", "values")));
  if (!kept.isEmpty()) {
    print(QStringLiteral("  kept the live value (already set): %1\n").arg(listed_names(kept)));
  }
  if (!refused.isEmpty()) {
    print(QStringLiteral("  not restored, too large to store (10,000,000 or more UTF-16 code "
                         "units): %1\n")
              .arg(listed_names(refused)));
  }
  if (!left_out.isEmpty()) {
    print(QStringLiteral("  not restored, the settings file would grow past %1: %2\n")
              .arg(bytes_text(max_file_bytes), listed_names(left_out)));
  }
  if (restored.size() == keys.size()) {
    print(QStringLiteral("Everything came back; %1 can be deleted.\n").arg(source_path));
  }
  return exit_ok;
}

void add_recover_options(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("merge"),
                    QStringLiteral("Bring the running version's values back from FILE: a path, or "
                                   "large, corrupt, format-error or reset for the copy beside the file."),
                    QStringLiteral("FILE")});
  add_main_key_option(parser);
}

int run_recover(const invocation& call) {
  const QString main_key = chosen_main_key(call);
  if (call.options.isSet(QStringLiteral("merge"))) {
    return merge_copy(call.options.value(QStringLiteral("merge")), main_key);
  }
  return list_copies(settings_file_path(), main_key);
}

}  // namespace

std::vector<command> recover_commands() {
  return {
      {"recover", "[--merge FILE]", 0, 0, "list set-aside copies; --merge one back",
       "Lists the copies set aside beside the settings file: \".large\" (the file had grown past\n"
       "10,000,000 bytes), \".corrupt\" (it failed to load), \".format-error\" (kept after a\n"
       "read with format errors), and \".reset\" (kept by 'cfgq reset'), with their size and\n"
       "main keys.\n"
       "With --merge FILE, brings the running version's values from that copy into the live file:\n"
       "values the live file already holds keep their (newer) live value; values the size limit\n"
       "refuses are skipped; and values that would make the live file grow past 10,000,000 bytes\n"
       "are left out (each value's written size is estimated before it is added). The report\n"
       "names what came back and what did not.",
       add_recover_options, run_recover},
  };
}

}  // namespace cli
