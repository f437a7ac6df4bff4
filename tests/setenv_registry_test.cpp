// Persistent environment variables on Windows: the registry stores keep a value's type, read
// %NAME% references back unexpanded, refuse what no environment can hold, and cfgq_setenv appends
// to an expandable list of the user's store.
#include <windows.h>

#include <QString>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "cfgq_setenv.h"

namespace {

using cfgq_env::write_outcome;

const wchar_t scratch_key[] = L"Software\\cfgq-test\\Environment";
const QString scratch = QStringLiteral("HKEY_CURRENT_USER\\Software\\cfgq-test\\Environment");

void put(const wchar_t* key, const wchar_t* name, DWORD type, const std::wstring& text) {
  ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key, name, type, text.c_str(),
                            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
            ERROR_SUCCESS);
}

DWORD type_of(const wchar_t* key, const wchar_t* name) {
  DWORD type = REG_NONE;
  RegGetValueW(HKEY_CURRENT_USER, key, name, RRF_RT_ANY | RRF_NOEXPAND, &type, nullptr, nullptr);
  return type;
}

class SetenvRegistryTest : public ::testing::Test {
 protected:
  SetenvRegistryTest() { RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\cfgq-test"); }
  ~SetenvRegistryTest() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\cfgq-test");
    RegDeleteKeyValueW(HKEY_CURRENT_USER, L"Environment", L"CFGQ_TEST_LIST");
  }
};

TEST_F(SetenvRegistryTest, WritesKeepTheTypeAndReadBackUnexpanded) {
  const struct {
    const char* label;
    DWORD type_before;  // REG_NONE: no value before
    const char* text;
    DWORD type_after;
  } rows[] = {
      {"new value is text", REG_NONE, "%USERPROFILE%\\korvel", REG_SZ},
      {"text stays text", REG_SZ, "%USERPROFILE%\\korvel", REG_SZ},
      {"expandable stays expandable", REG_EXPAND_SZ, "%USERPROFILE%\\korvel;%SystemRoot%", REG_EXPAND_SZ},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.label);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, scratch_key, L"V");
    if (r.type_before != REG_NONE) put(scratch_key, L"V", r.type_before, L"old");
    EXPECT_EQ(cfgq_env::store_write(scratch, "V", r.text).outcome, write_outcome::written);
    EXPECT_EQ(type_of(scratch_key, L"V"), r.type_after);
    EXPECT_EQ(cfgq_env::store_text(scratch, "V").value_or("(none)"), QString(r.text));
  }
}

TEST_F(SetenvRegistryTest, RefusesWhatNoEnvironmentCanHold) {
  const std::pair<QString, QString> rows[] = {
      {"", "v"}, {"A\\B", "v"}, {"A/B", "v"}, {"A=B", "v"},
      {"A", QString("a") + QChar::Null + "b"}, {"A", QString(32'768, QLatin1Char('x'))},
  };
  for (const auto& [name, value] : rows) {
    SCOPED_TRACE(name.toStdString());
    EXPECT_EQ(cfgq_env::store_write(scratch, name, value).outcome, write_outcome::refused);
  }
  EXPECT_TRUE(cfgq_env::store_variables(scratch).empty());
}

// The user's Path-like list, expandable as a person or an installer made it: an append keeps
// the type and the references, and an item already there (ignoring case) is not added again.
TEST_F(SetenvRegistryTest, AppendToAnExpandableUserListKeepsItsReferences) {
  put(L"Environment", L"CFGQ_TEST_LIST", REG_EXPAND_SZ, L"%SystemRoot%\\bin");
  QString scope;
  EXPECT_TRUE(cfgq_setenv("CFGQ_TEST_LIST", "%USERPROFILE%\\korvel", scope, true, ";", false));
  EXPECT_EQ(scope, "user");
  EXPECT_FALSE(cfgq_setenv("CFGQ_TEST_LIST", "%userprofile%\\KORVEL", scope, true, ";", false));
  const QString location = cfgq_env::store_location(cfgq_env::store::user);
  EXPECT_EQ(cfgq_env::store_text(location, "CFGQ_TEST_LIST").value_or("(none)"),
            "%SystemRoot%\\bin;%USERPROFILE%\\korvel");
  EXPECT_EQ(type_of(L"Environment", L"CFGQ_TEST_LIST"), static_cast<DWORD>(REG_EXPAND_SZ));
}

}  // namespace
