// Output, error lines, main keys and sections, shared by every command of the tool.
#include "cli.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QTemporaryDir>
#include <QLocale>

#include "cfgq_tool.h"
#include "settings_snapshot.h"

namespace cli {
namespace {

// The section table is protected in the view; a derived class may name it.
struct section_table : CFGQ_REGISTRY_KEY {
  using CFGQ_REGISTRY_KEY::DEFAULT_SUB_KEYS;
};

}  // namespace

const CFGQ_REGISTRY_KEY::ENUMERATED_SUB_KEY_NAME& section_row(int key) {
  return section_table::DEFAULT_SUB_KEYS[key];
}

namespace {

// The file --file names, and the private copy the commands work on.
struct other_file {
  QString path;
  bool write = false;
  std::unique_ptr<QTemporaryDir> directory;
  QString copy;
  QByteArray bytes;  // the file's bytes when it was read
};
std::optional<other_file> other;

}  // namespace

namespace {

// The first error a write to standard output met; 0 while every byte got out.
int stdout_error = 0;

void flush_stdout() {
  if (std::fflush(stdout) != 0 && stdout_error == 0) stdout_error = errno != 0 ? errno : EIO;
}

}  // namespace

void print(const QString& text) { print_bytes(text.toUtf8()); }

void print_bytes(const QByteArray& bytes) {
  if (bytes.isEmpty()) return;
  errno = 0;
  if (std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout) !=
          static_cast<size_t>(bytes.size()) &&
      stdout_error == 0) {
    stdout_error = errno != 0 ? errno : EIO;
  }
}

int finish_output(const QString& what, int status) {
  flush_stdout();
  if (std::ferror(stdout) && stdout_error == 0) stdout_error = EIO;
  if (std::fclose(stdout) != 0 && stdout_error == 0) stdout_error = errno != 0 ? errno : EIO;
  if (stdout_error == 0) return status;
  const QByteArray line = QStringLiteral("cfgq: %1: standard output: %2\n")
                              .arg(what, system_reason(stdout_error))
                              .toUtf8();
  std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
  return exit_failed;
}

QString system_reason(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

bool read_standard_input(qint64 most, QByteArray* bytes, QString* why) {
  bytes->clear();
  char buffer[1 << 16];
  while (bytes->size() <= most) {
    const size_t got = std::fread(buffer, 1, sizeof buffer, stdin);
    bytes->append(buffer, static_cast<qsizetype>(got));
    if (got < sizeof buffer) break;
  }
  if (std::ferror(stdin)) {
    *why = system_reason(errno);
    return false;
  }
  return true;
}

int fail(const QString& what, const QString& why, int status) {
  flush_stdout();
  const QByteArray line = QStringLiteral("cfgq: %1: %2\n").arg(what, why).toUtf8();
  std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
  return status;
}

void note(const QString& text) {
  flush_stdout();
  const QByteArray line = QStringLiteral("cfgq: %1\n").arg(text).toUtf8();
  std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
}

void add_main_key_option(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("main-key"),
                    QStringLiteral("Work on main key KEY (another version or edition, e.g. "
                                   "24.3_pro) instead of the running version's."),
                    QStringLiteral("KEY")});
}

QString running_main_key() { return cfgq_tool_main_key(); }

QString chosen_main_key(const invocation& call) {
  if (call.options.isSet(QStringLiteral("main-key"))) {
    return call.options.value(QStringLiteral("main-key"));
  }
  return running_main_key();
}

QString settings_file_path() { return other ? other->path : cfgq_tool_settings_file(); }

void add_write_options(QCommandLineParser& parser) {
  add_main_key_option(parser);
  parser.addOption({QStringLiteral("no-migrate"),
                    QStringLiteral("On a version not migrated yet, don't carry an earlier "
                                   "version's settings forward first; only mark it as migrated.")});
}

// ---- Room in the settings file ---------------------------------------------------------------

QString room_left(qint64 size) {
  return QStringLiteral("%1 bytes").arg(QLocale(QLocale::English).toString(std::max<qint64>(0, max_file_bytes - size)));
}

int check_room(const QString& what, const pending_writes& writes) {
  const QString path = settings_file_path();
  QByteArray bytes;
  bool exists = false;
  QString why;
  if (!read_file_bytes(path, &bytes, &exists, &why)) return fail(what, QStringLiteral("%1: %2").arg(path, why), exit_failed);
  // Far from the limit an upper bound of the new lines settles it; near it, a private copy
  // written by the same writer gives the exact size.
  qint64 size = bytes.size();
  for (const auto& [key, value] : writes) size += line_bytes(key, value);
  if (!cfgq_over_file_limit(size)) return exit_ok;
  const qint64 exact = size_after_writes(bytes, writes, &why);
  if (exact >= 0) size = exact;
  if (!cfgq_over_file_limit(size)) return exit_ok;
  const QLocale english(QLocale::English);
  return fail(what,
              QStringLiteral("nothing written: the settings file would grow to %1 bytes, past "
                             "its limit of %2 bytes, and every program would then set all "
                             "settings aside at its start. Room left: %3; make room by removing "
                             "large values ('cfgq show' lists them, 'cfgq unset' and 'cfgq clear' "
                             "remove them)")
                  .arg(english.toString(size), english.toString(max_file_bytes), room_left(bytes.size())),
              exit_failed);
}

// ---- Writes ----------------------------------------------------------------------------------

int check_writes(const QString& what) {
  cfgq_write_failure failure;
  if (!cfgq_tool_take_write_failure(&failure)) return exit_ok;
  QString why = QStringLiteral("%1: %2").arg(failure.path, failure.reason);
  if (failure.lock_pid != 0) why += QStringLiteral(" (process %1 holds its lock)").arg(failure.lock_pid);
  return fail(what, why, exit_failed);
}

bool write_file_atomically(const QString& path, const QByteArray& bytes, QString* why) {
  return cfgq_tool_replace_file(path, bytes, why);
}

// ---- Isolated runs and set-aside copies ------------------------------------------------------

namespace {

struct set_aside_kind {
  const char* suffix;
  const char* what;  // what happened to the file
};

const set_aside_kind set_aside_kinds[] = {
    {cfgq_format_error_suffix, "had format errors; a byte-exact copy was kept as %1"},
    {cfgq_corrupt_suffix, "could not be loaded; it was set aside as %1 and the settings start empty"},
    {cfgq_large_suffix, "had grown past 10,000,000 bytes; it was set aside as %1 and the settings start "
               "empty"},
};

// Enough of a file's state to see that it was made or replaced: empty when absent.
QByteArray file_state(const QString& path) {
  const QFileInfo info(path);
  if (!info.exists()) return QByteArray();
  return QByteArray::number(info.size()) + ' ' +
         QByteArray::number(info.lastModified().toMSecsSinceEpoch()) + ' ' +
         QByteArray::number(info.metadataChangeTime().toMSecsSinceEpoch());
}

}  // namespace

QString isolation_cause() {
  QString why;
  return cfgq_tool_isolated_run(&why) ? why : QString();
}

settings_run::settings_run() {
  const QString cause = isolation_cause();
  if (!cause.isEmpty()) {
    note(QStringLiteral("warning: %1 makes this an isolated run: settings are read from and "
                        "written to a temporary file that is removed when cfgq exits (unset %2 "
                        "to reach the profile's settings)")
             .arg(cause, cause.section(QLatin1Char('='), 0, 0)));
  }
  const QString file = settings_file_path();
  for (const set_aside_kind& kind : set_aside_kinds) {
    const QString copy = file + QLatin1String(kind.suffix);
    m_copies.emplace_back(copy, file_state(copy));
  }
}

settings_run::~settings_run() {
  const QString file = settings_file_path();
  for (size_t i = 0; i < m_copies.size(); ++i) {
    const QByteArray now = file_state(m_copies[i].first);
    if (now.isEmpty() || now == m_copies[i].second) continue;
    note(QStringLiteral("note: the settings file %1 %2 ('cfgq recover' lists it)")
             .arg(file, QString::fromLatin1(set_aside_kinds[i].what).arg(m_copies[i].first)));
  }
}

std::optional<QString> resolve_section(const QString& argument, QString* why) {
  QStringList levels = argument.split(QLatin1Char('/'), Qt::SkipEmptyParts);
  if (levels.isEmpty()) {
    *why = QStringLiteral("a section name must not be empty");
    return std::nullopt;
  }
  // Only the first level can be an enumerator: GENERAL/Dialogs is General/Dialogs.
  for (int key = CFGQ_REGISTRY_KEY::NO_MAIN_KEY; key <= CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++key) {
    const auto& row = section_row(key);
    if (levels.first() != QLatin1String(row.enum_name)) continue;
    levels.first() = QString::fromUtf8(row.sub_key_name);
    if (levels.first().isEmpty()) {
      *why = QStringLiteral("%1 names no section (see 'cfgq sections')").arg(argument);
      return std::nullopt;
    }
    break;
  }
  return levels.join(QLatin1Char('/'));
}

QString similar_section(const QString& name) {
  for (int key = CFGQ_REGISTRY_KEY::GENERAL; key < CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++key) {
    const auto& row = section_row(key);
    const QString group = QString::fromUtf8(row.sub_key_name);
    if (name.compare(group, Qt::CaseInsensitive) == 0 ||
        name.compare(QLatin1String(row.enum_name), Qt::CaseInsensitive) == 0) {
      return group;
    }
  }
  return QString();
}

namespace {

// Edits (a letter added, dropped or changed) that turn `a` into `b`, letter case aside; stops
// counting past `most`.
int edit_distance(const QString& a, const QString& b, int most) {
  const QString x = a.toCaseFolded();
  const QString y = b.toCaseFolded();
  if (std::abs(x.size() - y.size()) > most) return most + 1;
  std::vector<int> row(static_cast<size_t>(y.size()) + 1);
  for (size_t j = 0; j < row.size(); ++j) row[j] = static_cast<int>(j);
  for (qsizetype i = 1; i <= x.size(); ++i) {
    int diagonal = row[0];
    row[0] = static_cast<int>(i);
    int smallest = row[0];
    for (qsizetype j = 1; j <= y.size(); ++j) {
      const int above = row[static_cast<size_t>(j)];
      row[static_cast<size_t>(j)] =
          std::min({above + 1, row[static_cast<size_t>(j - 1)] + 1,
                    diagonal + (x.at(i - 1) == y.at(j - 1) ? 0 : 1)});
      diagonal = above;
      smallest = std::min(smallest, row[static_cast<size_t>(j)]);
    }
    if (smallest > most) return most + 1;
  }
  return row.back();
}

}  // namespace

QString nearest_name(const QString& name, const QStringList& candidates) {
  // Up to one edit in three letters, at most three: "Generall" finds General, "Tips" nothing.
  const int most = static_cast<int>(std::clamp<qsizetype>(name.size() / 3, 1, 3));
  QString best;
  int best_distance = most + 1;
  for (const QString& candidate : candidates) {
    if (candidate == name) continue;
    const int distance = edit_distance(name, candidate, most);
    if (distance < best_distance) {
      best = candidate;
      best_distance = distance;
    }
  }
  return best;
}

QString section_hint(const QString& section, const QString& main_key) {
  QStringList candidates = open_view(main_key, QString())->childGroups();
  for (int key = CFGQ_REGISTRY_KEY::GENERAL; key < CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++key) {
    candidates.append(QString::fromUtf8(section_row(key).sub_key_name));
  }
  const QString first = section.section(QLatin1Char('/'), 0, 0);
  const QString nearest = nearest_name(first, candidates);
  if (nearest.isEmpty()) return QString();
  QString meant = section;
  meant.replace(0, first.size(), nearest);
  return QStringLiteral(" (did you mean '%1'?)").arg(meant);
}

bool section_known(const QString& section, const QString& main_key) {
  for (int key = CFGQ_REGISTRY_KEY::GENERAL; key < CFGQ_REGISTRY_KEY::LAST_SUB_KEY; ++key) {
    if (section == QLatin1String(section_row(key).sub_key_name)) return true;
  }
  return !open_view(main_key, section)->allKeys().isEmpty();
}

// ---- Views, and --file ------------------------------------------------------------------------


settings_view::settings_view(std::unique_ptr<CFGQ_REGISTRY_KEY> view) : m_view(std::move(view)) {}
settings_view::settings_view(std::unique_ptr<QSettings> raw) : m_raw(std::move(raw)) {}
settings_view::~settings_view() {
  if (m_raw) m_raw->sync();
}

void settings_view::beginGroup(const QString& group) { m_view ? m_view->beginGroup(group) : m_raw->beginGroup(group); }
void settings_view::endGroup() { m_view ? m_view->endGroup() : m_raw->endGroup(); }
QString settings_view::group() const { return m_view ? m_view->group() : m_raw->group(); }
QString settings_view::fileName() const { return m_view ? m_view->fileName() : other->path; }

bool settings_view::get_value(const QString& name, QVariant* value) {
  if (m_view) return m_view->get_value(name, value);
  if (name.contains(QLatin1Char('/')) || !m_raw->childKeys().contains(name)) return false;
  *value = m_raw->value(name);
  return true;
}

void settings_view::set_value(const QString& name, const QVariant& value) {
  if (m_view) {
    m_view->set_value(name, value);
  } else if (!cfgq_value_too_large(value.toString().size())) {  // the library's limit
    m_raw->setValue(name, value);
  }
}

QVariant settings_view::value(const QString& key) const { return m_view ? m_view->value(key) : m_raw->value(key); }
bool settings_view::contains(const QString& key) const { return m_view ? m_view->contains(key) : m_raw->contains(key); }
void settings_view::remove(const QString& key) { m_view ? m_view->remove(key) : m_raw->remove(key); }
QStringList settings_view::allKeys() const { return m_view ? m_view->allKeys() : m_raw->allKeys(); }
QStringList settings_view::childKeys() const { return m_view ? m_view->childKeys() : m_raw->childKeys(); }
QStringList settings_view::childGroups() const { return m_view ? m_view->childGroups() : m_raw->childGroups(); }
void settings_view::clear_registry_key() { m_view ? m_view->clear_registry_key() : m_raw->remove(QString()); }

std::unique_ptr<settings_view> open_root() {
  if (other) return std::make_unique<settings_view>(std::make_unique<QSettings>(other->copy, QSettings::IniFormat));
  return std::make_unique<settings_view>(
      std::make_unique<CFGQ_REGISTRY_KEY>(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr));
}

std::unique_ptr<settings_view> open_view(const QString& main_key, const QString& group) {
  auto view = open_root();
  view->beginGroup(main_key);
  if (!group.isEmpty()) view->beginGroup(group);
  return view;
}

bool use_other_file(const QString& path, bool write, QString* why, int* status) {
  other_file file;
  file.path = QFileInfo(path).absoluteFilePath();
  file.write = write;
  bool exists = false;
  *status = exit_failed;
  if (!read_file_bytes(file.path, &file.bytes, &exists, why)) return false;
  if (!exists && !write) {
    *why = QStringLiteral("no such file");
    *status = exit_absent;
    return false;
  }
  if (write && cfgq_over_file_limit(file.bytes.size())) {
    *why = QStringLiteral("%1 bytes, over the %2-byte limit: no program would load what --write "
                          "writes (read it without --write, or 'cfgq recover --merge' it)")
               .arg(QLocale(QLocale::English).toString(file.bytes.size()),
                    QLocale(QLocale::English).toString(max_file_bytes));
    return false;
  }
  file.directory = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/cfgq-file-XXXXXX"));
  file.copy = file.directory->filePath(QStringLiteral("settings.ini"));
  QFile copy(file.copy);
  if (!file.directory->isValid() || !copy.open(QIODevice::WriteOnly) || copy.write(file.bytes) != file.bytes.size() ||
      !copy.flush()) {
    *why = QStringLiteral("no private copy could be made to read it: %1").arg(copy.errorString());
    return false;
  }
  other = std::move(file);
  return true;
}

bool other_file_in_use(bool* writable) {
  if (writable != nullptr) *writable = other && other->write;
  return other.has_value();
}

int finish_other_file(const QString& what) {
  if (!other || !other->write) return exit_ok;
  QByteArray bytes;
  bool exists = false;
  QString why;
  if (!read_file_bytes(other->copy, &bytes, &exists, &why)) return fail(what, QStringLiteral("%1: %2").arg(other->copy, why), exit_failed);
  if (bytes == other->bytes) return exit_ok;
  if (cfgq_over_file_limit(bytes.size())) {
    return fail(what, QStringLiteral("%1: nothing written: it would grow to %2 bytes, past its limit of %3 bytes")
                          .arg(other->path, QLocale(QLocale::English).toString(bytes.size()),
                               QLocale(QLocale::English).toString(max_file_bytes)),
                exit_failed);
  }
  if (!write_file_atomically(other->path, bytes, &why)) return fail(what, QStringLiteral("%1: %2").arg(other->path, why), exit_failed);
  return exit_ok;
}

bool split_key(const QString& key, QString* subgroup, QString* name) {
  QStringList levels = key.split(QLatin1Char('/'), Qt::SkipEmptyParts);
  if (levels.isEmpty()) return false;
  *name = levels.takeLast();
  *subgroup = levels.join(QLatin1Char('/'));
  return true;
}

int check_settings_file(const QString& what) {
  const QString path = settings_file_path();
  const QFileInfo info(path);
  if (!info.exists()) return exit_ok;
  if (info.isDir()) return fail(what, QStringLiteral("%1: a directory, not a settings file").arg(path), exit_failed);
  if (!info.isFile()) return fail(what, QStringLiteral("%1: not a regular file").arg(path), exit_failed);
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    return fail(what, QStringLiteral("%1: %2").arg(path, file.errorString()), exit_failed);
  }
  const QByteArray head = file.read(64 * 1024);
  const QByteArray start = head.trimmed().left(1);
  if ((start == "{" || start == "[") && !cfgq_over_file_limit(info.size())) {
    QJsonParseError error;
    QJsonDocument::fromJson(head + file.readAll(), &error);
    if (error.error == QJsonParseError::NoError) {
      return fail(what,
                  QStringLiteral("%1: holds JSON, not settings (an export? 'cfgq import FILE' "
                                 "reads one back)")
                      .arg(path),
                  exit_failed);
    }
  }
  // Text has no NUL bytes and few control characters; a settings file is text.
  qsizetype control = 0;
  for (const char c : head) {
    if (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t') ++control;
  }
  if (head.contains('\0') || control * 10 > head.size()) {
    return fail(what,
                QStringLiteral("%1: holds binary data, not settings (move it away to start "
                               "afresh; 'cfgq recover' lists copies kept beside it)")
                    .arg(path),
                exit_failed);
  }
  return exit_ok;
}

QString unwritable_reason(const QString& file_path) {
  const QFileInfo file(file_path);
  if (file.exists()) {
    if (!file.isFile()) return QStringLiteral("not a regular file");
    return file.isWritable() ? QString() : QStringLiteral("no permission to write it");
  }
  const QFileInfo directory(file.absolutePath());
  if (!directory.isDir()) return QStringLiteral("its directory does not exist");
  return directory.isWritable() ? QString()
                                : QStringLiteral("no permission to create it in its directory");
}

QString listed_names(const QStringList& names) {
  constexpr int most_listed = 20;
  QString text = names.mid(0, most_listed).join(QStringLiteral(", "));
  if (names.size() > most_listed) text += QStringLiteral(" and %1 more").arg(names.size() - most_listed);
  return text;
}

QString count_of(qsizetype n, const char* singular, const char* plural) {
  return QStringLiteral("%1 %2").arg(n).arg(QLatin1String(n == 1 ? singular : plural));
}

}  // namespace cli
