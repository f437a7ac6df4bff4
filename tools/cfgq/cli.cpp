// Output, error lines, main keys and sections, shared by every command of the tool.
#include "cli.h"

#include <cstdio>

#include <QDir>
#include <QFileInfo>

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

void print(const QString& text) { print_bytes(text.toUtf8()); }

void print_bytes(const QByteArray& bytes) {
  std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
}

int fail(const QString& what, const QString& why, int status) {
  std::fflush(stdout);
  const QByteArray line = QStringLiteral("cfgq: %1: %2\n").arg(what, why).toUtf8();
  std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
  return status;
}

void note(const QString& text) {
  std::fflush(stdout);
  const QByteArray line = QStringLiteral("cfgq: %1\n").arg(text).toUtf8();
  std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
}

void add_main_key_option(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("main-key"),
                    QStringLiteral("Work on main key KEY (another version or edition, e.g. "
                                   "24.3_pro) instead of the running version's."),
                    QStringLiteral("KEY")});
}

QString running_main_key() {
  const CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::NO_SUB_KEY, nullptr, nullptr);
  return view.group();
}

QString chosen_main_key(const invocation& call) {
  if (call.options.isSet(QStringLiteral("main-key"))) {
    return call.options.value(QStringLiteral("main-key"));
  }
  return running_main_key();
}

QString settings_file_path() {
  const CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
  return view.fileName();
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

std::unique_ptr<CFGQ_REGISTRY_KEY> open_view(const QString& main_key, const QString& group) {
  auto view = std::make_unique<CFGQ_REGISTRY_KEY>(CFGQ_REGISTRY_KEY::NO_MAIN_KEY, nullptr, nullptr);
  view->beginGroup(main_key);
  if (!group.isEmpty()) view->beginGroup(group);
  return view;
}

bool split_key(const QString& key, QString* subgroup, QString* name) {
  QStringList levels = key.split(QLatin1Char('/'), Qt::SkipEmptyParts);
  if (levels.isEmpty()) return false;
  *name = levels.takeLast();
  *subgroup = levels.join(QLatin1Char('/'));
  return true;
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
