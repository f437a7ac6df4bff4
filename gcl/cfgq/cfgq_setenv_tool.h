// What the cfgq tool asks the library about the persistent environment stores beyond
// cfgq_setenv: where they are, what they hold, and removing a variable. A failed store write of
// cfgq_setenv is reported through cfgq_tool_take_write_failure (cfgq_tool.h).
#pragma once

#include <QList>
#include <QPair>
#include <QString>

#include "cfgq_export.h"

struct cfgq_env_store {
  QString scope;    // "user" or "system", as cfgq_setenv reports it
  QString path;     // the store's file (registry key on Windows); empty when there is none
  QString problem;  // why there is no path, or why the session can't use the store as it stands
};

CFGQ_EXPORT cfgq_env_store cfgq_tool_env_store(bool system);

// The text the store at `path` holds for `name`, before expansion; false when it holds none.
CFGQ_EXPORT bool cfgq_tool_env_text(const QString& path, const QString& name, QString* text);

// Every variable the store at `path` holds, name and text, in the store's order.
CFGQ_EXPORT QList<QPair<QString, QString>> cfgq_tool_env_variables(const QString& path);

// Removes `name` from the store at `path`; false, with *why, when the store could not be written.
CFGQ_EXPORT bool cfgq_tool_env_remove(const QString& path, const QString& name, QString* why);
