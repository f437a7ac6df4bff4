// The environment.d format on bytes: what each element reads as, where a new line can go, and
// the edits that keep every other byte.
#include <optional>

#include <QByteArray>
#include <QByteArrayList>
#include <gtest/gtest.h>

#include "cfgq_setenv_envd.h"

namespace {

// "NAME=text;NAME=text" of every counting assignment.
QByteArray listing(const QByteArray& bytes) {
  QByteArrayList parts;
  for (const auto& [name, text] : envd::variables(envd::parse(bytes))) parts << name + '=' + text;
  return parts.join(';');
}

TEST(EnvdFormat, ReadsEachElementAsTheGeneratorDoes) {
  const struct {
    QByteArray bytes, expected;
  } rows[] = {
      {"A=1\nB=2", "A=1;B=2"},
      {"# c\n; c\n  # indented\nA=1", "A=1"},
      {"# c \\\nA=hidden\nB=1", "B=1"},              // a comment carried on
      {"  A B  =  bare  value  \nAB=x", "AB=x"},      // a name with a blank is no name
      {"A = bare  value \t\n", "A=bare  value"},
      {"A=a\\ \\\\b\\\nc\n", "A=a \\bc"},             // escapes, joined lines
      {"A='x $y \\n'\n", "A=x $y \\n"},
      {"A=\"q\\\"b\\\\s\\`t\\$d\\q\\\ne\"\n", "A=q\"b\\s`t$d\\qe"},
      {"A=\"x\" 'y' z\n", "A=xyz"},                   // pieces run together
      {"A=a\"b'c\n", "A=a\"b'c"},                     // quotes inside bare text are text
      {"A=${PATH}:$HOME/bin:$$\n", "A=${PATH}:$HOME/bin:$$"},
      {"A=\"two\nlines\"\n", "A=two\nlines"},
      {"A=1\r\nB=2\r\n", "A=1;B=2"},
      {"A=1\\\r\nB=2\r\n", "A=1;B=2"},                // "\\\r" ends at the "\n"
      {"A=1\nA=\nA=\"\"\nB=1\nB=2\n", "A=1;B=2"},     // empty values don't count; last wins
      {"1A=x\nA-B=y\n=z\nNOEQUALS\n_a1=ok\n", "_a1=ok"},
      {"A=1\\", "A=1"},
      {"A=\"open", "A=open"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.bytes.toStdString());
    EXPECT_EQ(listing(r.bytes), r.expected);
  }
}

TEST(EnvdFormat, NotesWhatStopsTheGenerator) {
  EXPECT_EQ(envd::parse(QByteArray("A=1\nB=\0x\n", 10)).nul_at, 6);
  EXPECT_EQ(envd::parse("A=1\nB=\xff\n").bad_utf8_at, 4);
  EXPECT_EQ(envd::parse("# \xff\nA=1\n").bad_utf8_at, -1);  // a comment may hold any byte
}

TEST(EnvdFormat, EditsKeepEveryOtherByte) {
  const QByteArray v = "v";
  const struct {
    const char* label;
    QByteArray before;
    const QByteArray* value;  // nullptr: remove
    std::optional<QByteArray> after;
  } rows[] = {
      {"empty file", "", &v, "FOO=\"v\"\n"},
      {"no final line break", "# c\nA=1", &v, "# c\nA=1\nFOO=\"v\"\n"},
      {"comment without line break", "# c", &v, "# c\nFOO=\"v\"\n"},
      {"name without =", "A", &v, "A\nFOO=\"v\"\n"},
      {"continued comment", "A=1\n# c \\\n", &v, "A=1\n# c \\\n\nFOO=\"v\"\n"},
      {"backslash at the end", "A=1\\", &v, "A=1\\\n\nFOO=\"v\"\n"},
      {"open quote at the end", "A=\"1", &v, std::nullopt},
      {"replaced in place", "# h\nA=1\n FOO=old # x\n\n; s\n", &v, "# h\nA=1\n FOO=\"v\"\n\n; s\n"},
      {"earlier duplicates go", "FOO=1\nA=2\n  FOO=3\n", &v, "A=2\n  FOO=\"v\"\n"},
      {"multi-line old value", "FOO=\"a\nb\"\nA=1\n", &v, "FOO=\"v\"\nA=1\n"},
      {"continued old value", "FOO=a\\\nb\nA=1\n", &v, "FOO=\"v\"\nA=1\n"},
      {"similar names", "FOOBAR=1\nFO=2\n", &v, "FOOBAR=1\nFO=2\nFOO=\"v\"\n"},
      {"crlf replaced", "A=1\r\nFOO=x\r\nB=2\r\n", &v, "A=1\r\nFOO=\"v\"\r\nB=2\r\n"},
      {"crlf added", "A=1\r\n", &v, "A=1\r\nFOO=\"v\"\r\n"},
      {"crlf removed", "A=1\r\nFOO=x\r\nB=2\r\n", nullptr, "A=1\r\nB=2\r\n"},
      {"every assignment removed", "FOO=x\nA=1\nFOO=y", nullptr, "A=1\n"},
      {"nothing to remove", "A=1", nullptr, "A=1"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.label);
    const QByteArray line = r.value ? envd::assignment_line("FOO", *r.value) : QByteArray();
    EXPECT_EQ(envd::edited(r.before, envd::parse(r.before), "FOO", r.value ? &line : nullptr),
              r.after);
  }
}

TEST(EnvdFormat, WrittenTextReadsBackUnchanged) {
  const QByteArray texts[] = {
      "a\\",    "\\n",   "back`tick`", "\"q\"", "'s'",   "a=b",   "#hash", ";semi", "  both  ",
      "\ttab",  "l1\nl2", "l1\r\nl2\n", "\xC3\xA9 \xE4\xB8\xAD", "a\\\nb", "${X}", "$$", "x\\"};
  for (const QByteArray& text : texts) {
    SCOPED_TRACE(text.toStdString());
    EXPECT_EQ(envd::lookup(envd::parse(envd::assignment_line("V", text) + '\n'), "V"), text);
  }
}

// A list that extends the login's value is stored in a form without an empty first item, and
// reads back as the same list; other text stays as it is.
TEST(EnvdFormat, LoginFormsRoundTrip) {
  const struct {
    QByteArray name, list, stored;
  } rows[] = {
      {"PATH", "${PATH}:/opt/k/bin", "${PATH:+${PATH}:}/opt/k/bin"},
      {"LIB", "${LIB};/a;/b", "${LIB:+${LIB};}/a;/b"},
      {"XDG_DATA_DIRS", "${XDG_DATA_DIRS}:/opt/k", "${XDG_DATA_DIRS:-/usr/local/share/:/usr/share/}:/opt/k"},
      {"XDG_CONFIG_DIRS", "${XDG_CONFIG_DIRS}:/opt/k", "${XDG_CONFIG_DIRS:-/etc/xdg}:/opt/k"},
      {"MANPATH", "${MANPATH}:/opt/k/man", "${MANPATH:+${MANPATH}:}/opt/k/man:"},
      {"PATH", "/only:${PATH}", "/only:${PATH}"},    // no leading reference
      {"PATH", "${PATH}", "${PATH}"},                // nothing after it
      {"PATH", "${PATHS}:/x", "${PATHS}:/x"},        // another variable
      {"PATH", "${PATH}/bin:/x", "${PATH}/bin:/x"},  // no separator after it
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.list.toStdString());
    EXPECT_EQ(envd::to_login_form(row.name, row.list), row.stored);
    EXPECT_EQ(envd::from_login_form(row.name, row.stored), row.list);
  }
  EXPECT_EQ(envd::from_login_form("MANPATH", "${MANPATH}:/a:"), "${MANPATH}:/a");  // written by hand
}

}  // namespace
