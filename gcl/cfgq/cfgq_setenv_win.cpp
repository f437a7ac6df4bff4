// The persistent environment stores on Windows: the user's and the machine's environment keys
// in the registry, read and written through native-format QSettings, and the broadcast that
// tells running programs about a change.
// May use: cfgq_setenv.
#include "cfgq_setenv.h"

#include <string>

#include <QSettings>
#include <QVariant>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace {

const QString system_environment_key = QStringLiteral(
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment");
const QString user_environment_key = QStringLiteral("HKEY_CURRENT_USER\\Environment");

// The longest value, in UTF-16 code units, that the system puts into a process's environment.
// A longer one is refused whole rather than cut.
constexpr qsizetype max_value_utf16_units = 32'767;
constexpr UINT broadcast_timeout_ms = 5'000;

// Closes a registry key on every path.
class key_handle {
 public:
  key_handle() = default;
  ~key_handle() {
    if (m_key != nullptr) RegCloseKey(m_key);
  }
  key_handle(const key_handle&) = delete;
  key_handle& operator=(const key_handle&) = delete;

  HKEY* out() { return &m_key; }
  HKEY get() const { return m_key; }

 private:
  HKEY m_key = nullptr;
};

// "HKEY_CURRENT_USER\Environment" -> (HKEY_CURRENT_USER, L"Environment").
bool split_location(const QString& location, HKEY* root, std::wstring* sub_key) {
  const qsizetype slash = location.indexOf(QLatin1Char('\\'));
  const QString root_name = slash < 0 ? location : location.left(slash);
  if (root_name == QLatin1String("HKEY_CURRENT_USER")) {
    *root = HKEY_CURRENT_USER;
  } else if (root_name == QLatin1String("HKEY_LOCAL_MACHINE")) {
    *root = HKEY_LOCAL_MACHINE;
  } else {
    return false;
  }
  *sub_key = slash < 0 ? std::wstring() : location.mid(slash + 1).toStdWString();
  return true;
}

cfgq_env::write_result refused(const QString& reason) {
  return {cfgq_env::write_outcome::refused, reason};
}

cfgq_env::write_result failed(const QString& why) {
  return {cfgq_env::write_outcome::failed, why};
}

enum class expandable { no, written, failed };

// A value stored as REG_EXPAND_SZ holds %NAME% references that the system expands when it
// builds an environment. QSettings would write it back as REG_SZ and the references would stop
// working, so such a value is written here, keeping its type.
expandable write_if_expandable(const QString& location, const QString& name, const QString& text,
                               QString* why) {
  HKEY root = nullptr;
  std::wstring sub_key;
  if (!split_location(location, &root, &sub_key)) return expandable::no;
  const std::wstring value_name = name.toStdWString();
  {
    key_handle key;
    if (RegOpenKeyExW(root, sub_key.c_str(), 0, KEY_QUERY_VALUE, key.out()) != ERROR_SUCCESS) {
      return expandable::no;
    }
    DWORD type = REG_NONE;
    if (RegQueryValueExW(key.get(), value_name.c_str(), nullptr, &type, nullptr, nullptr) !=
            ERROR_SUCCESS ||
        type != REG_EXPAND_SZ) {
      return expandable::no;
    }
  }
  key_handle key;
  LONG status = RegOpenKeyExW(root, sub_key.c_str(), 0, KEY_SET_VALUE, key.out());
  if (status == ERROR_SUCCESS) {
    const std::wstring data = text.toStdWString();
    // The size is in bytes and counts the terminating NUL.
    const DWORD bytes = static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t));
    status = RegSetValueExW(key.get(), value_name.c_str(), 0, REG_EXPAND_SZ,
                            reinterpret_cast<const BYTE*>(data.c_str()), bytes);
  }
  if (status == ERROR_SUCCESS) return expandable::written;
  *why = qt_error_string(static_cast<int>(status));
  return expandable::failed;
}

}  // namespace

namespace cfgq_env {

QString store_location(store which) {
  return which == store::system ? system_environment_key : user_environment_key;
}

QString store_read(const QString& location, const QString& name) {
  const QSettings settings(location, QSettings::NativeFormat);
  return settings.value(name).toString();
}

QString no_location_reason() { return QString(); }

std::optional<QString> store_text(const QString& location, const QString& name) {
  const QSettings settings(location, QSettings::NativeFormat);
  if (!settings.contains(name)) return std::nullopt;
  return settings.value(name).toString();
}

std::vector<std::pair<QString, QString>> store_variables(const QString& location) {
  const QSettings settings(location, QSettings::NativeFormat);
  std::vector<std::pair<QString, QString>> result;
  for (const QString& name : settings.childKeys()) {
    result.emplace_back(name, settings.value(name).toString());
  }
  return result;
}

QString store_problem(const QString&) { return QString(); }

write_result store_write(const QString& location, const QString& name, const QString& text) {
  // QSettings takes "/" and "\" as group separators: such a name would land in a subkey.
  if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) ||
      name.contains(QLatin1Char('='))) {
    return refused(QStringLiteral("\"%1\" is not a variable name").arg(name));
  }
  // QSettings would store text with a NUL as binary data, which no environment can hold.
  if (text.contains(QChar::Null)) return refused(QStringLiteral("the value holds a NUL"));
  if (text.size() > max_value_utf16_units) {
    return refused(QStringLiteral("the value has %1 UTF-16 code units, more than %2")
                       .arg(text.size())
                       .arg(max_value_utf16_units));
  }

  QString why;
  switch (write_if_expandable(location, name, text, &why)) {
    case expandable::written:
      return {write_outcome::written, QString()};
    case expandable::failed:
      return failed(why);
    case expandable::no:
      break;
  }

  QSettings settings(location, QSettings::NativeFormat);
  settings.setValue(name, QVariant(text));
  settings.sync();
  if (settings.status() != QSettings::NoError) {
    return failed(QStringLiteral("the registry refused the write"));
  }
  return {write_outcome::written, QString()};
}

void announce_change_by_platform() {
  // Each top-level window may take up to the full time-out; hung ones are skipped. The outcome
  // tells nothing the caller could act on.
  SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0,
                      reinterpret_cast<LPARAM>(L"Environment"), SMTO_ABORTIFHUNG,
                      broadcast_timeout_ms, nullptr);
}

}  // namespace cfgq_env
