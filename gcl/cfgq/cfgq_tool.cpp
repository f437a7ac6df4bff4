// What the cfgq tool asks the library beyond the public header.
#include "cfgq_tool.h"

#include <mutex>
#include <optional>

#include "cfgq_location.h"

namespace {

std::mutex failure_mutex;
std::optional<cfgq_write_failure> first_failure;

}  // namespace

QString cfgq_tool_settings_file() { return get_registry_file_path(); }

bool cfgq_tool_isolated_run(QString* why) { return cfgq_isolated_run(why); }

QString cfgq_tool_main_key() { return get_main_key_name(nullptr, nullptr); }

bool cfgq_tool_take_write_failure(cfgq_write_failure* failure) {
  std::lock_guard<std::mutex> lock(failure_mutex);
  if (!first_failure) return false;
  *failure = std::move(*first_failure);
  first_failure.reset();
  return true;
}

void cfgq_note_write_failure(const cfgq_write_failure& failure) {
  std::lock_guard<std::mutex> lock(failure_mutex);
  if (!first_failure) first_failure = failure;
}
