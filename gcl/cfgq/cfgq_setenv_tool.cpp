// The cfgq tool's questions about the environment stores, on the platform's store layer.
// May use: cfgq_file_lock, cfgq_file_platform, cfgq_setenv, cfgq_tool.
#include "cfgq_tool.h"

#include <memory>

#include <QFileInfo>

#include "cfgq_file_lock.h"
#include "cfgq_file_platform.h"
#include "cfgq_setenv.h"

cfgq_env_store cfgq_tool_env_store(bool system) {
  const cfgq_env::store which = system ? cfgq_env::store::system : cfgq_env::store::user;
  cfgq_env_store result;
  result.scope = cfgq_env::store_name(which);
  result.path = cfgq_env::store_location(which);
  result.problem = result.path.isEmpty() ? cfgq_env::no_location_reason()
                                         : cfgq_env::store_problem(result.path);
  return result;
}

bool cfgq_tool_env_text(const QString& path, const QString& name, QString* text) {
  const std::optional<QString> found = cfgq_env::store_text(path, name);
  if (found) *text = *found;
  return found.has_value();
}

QList<QPair<QString, QString>> cfgq_tool_env_variables(const QString& path) {
  QList<QPair<QString, QString>> result;
  for (const auto& [name, text] : cfgq_env::store_variables(path)) result.append({name, text});
  return result;
}

bool cfgq_tool_env_remove(const QString& path, const QString& name, QString* why) {
  const cfgq_env::write_result result = cfgq_env::store_write(path, name, QString());
  if (result.outcome == cfgq_env::write_outcome::written) return true;
  *why = result.reason;
  return false;
}

std::shared_ptr<void> cfgq_tool_hold_env_lock(QString* why) {
  // Beside the user's store, where every user's own `cfgq setenv` calls meet.
  const QString store = cfgq_env::store_location(cfgq_env::store::user);
  if (store.isEmpty() || !cfgq_platform::make_directories(QFileInfo(store).absolutePath(), why)) {
    return std::make_shared<int>(0);  // the write itself says what is wrong
  }
  auto lock = std::make_shared<cfgq_file_lock>(store + QStringLiteral(".setenv"));
  qint64 holder = 0;
  if (!lock->take(why, &holder)) return nullptr;
  return lock;
}
