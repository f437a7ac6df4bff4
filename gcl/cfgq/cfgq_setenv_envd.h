// The environment.d file format, as the session manager's environment generator reads it, and
// the edits the stores make to such files. Pure byte work: nothing here touches a file.
//
// A file is lines of NAME=VALUE. "#" or ";" first on a line starts a comment; a backslash at its
// end carries it onto the next line. A value is a run of pieces up to the end of its line: bare
// text (a backslash escapes the next character, an escaped line break joins lines, trailing
// blanks go), text in single quotes (taken as is) or in double quotes (a backslash escapes
// \ " ` $ and a line break; other backslashes stay).
// An assignment counts when its name is [A-Za-z_][A-Za-z0-9_]*, its value is not empty and is
// UTF-8; the last one of a name wins. A NUL anywhere makes the generator ignore the whole file,
// and a value that is not UTF-8 stops it altogether: the stores never write such a file.
//
// A value read here is the text before expansion: "${NAME}" and "$NAME" stay references and "$$"
// stays "$$" (the generator makes it one dollar). Writing keeps it that way: the text goes
// between double quotes with \ " ` escaped and "$" as it is.
// May use: cfgq_utf8.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include <QByteArray>

namespace envd {

bool is_valid_name(const QByteArray& name);

// One NAME=VALUE assignment of a file and the bytes it spans.
struct assignment {
  QByteArray name;           // blanks around it removed
  QByteArray value;          // quotes and escapes resolved
  qsizetype line_begin = 0;  // the line's first byte (blanks before the name included)
  qsizetype begin = 0;       // the name's first byte
  qsizetype end = 0;         // one past the value: its line break, or where the reading stopped
  qsizetype line_end = 0;    // past the line break that ends the assignment ("\r\n" as one)
};

struct parsed_file {
  std::vector<assignment> assignments;  // in file order, counting or not
  // How many line breaks a new line needs before it so that it stands on a line of its own:
  // 0 after a final line break, 1 after an unended line or continued comment, 2 after a
  // backslash at the very end; -1 when no line can follow (the file ends inside a quote).
  int breaks_needed = 0;
  qsizetype nul_at = -1;      // the first NUL; -1 for none
  qsizetype bad_utf8_at = -1;  // the first assignment's value that is not UTF-8; -1 for none
};

// ---- Reading: one function per element; each starts at `at`, returns where it stopped ----

// Where a reader runs into the end of the bytes, *open says how many line breaks would close
// the element (see breaks_needed); 0 when the element ended on its own.

// A comment, from its "#" or ";" through its line break (returned: past the line break).
qsizetype read_comment(const QByteArray& bytes, qsizetype at, int* open);
// A name, from its first byte to "=" (returned: the "=" position) or to a line break or the end
// (the line is then no assignment). Blanks at its end are dropped.
qsizetype read_name(const QByteArray& bytes, qsizetype at, QByteArray* name);
// Bare text to the end of its line (returned: the line break or the end).
qsizetype read_bare(const QByteArray& bytes, qsizetype at, QByteArray* value, int* open);
// Text in single quotes, `at` on the opening quote; returned: past the closing one, or the
// end with *closed false.
qsizetype read_single_quoted(const QByteArray& bytes, qsizetype at, QByteArray* value,
                             bool* closed);
// Text in double quotes, the same way.
qsizetype read_double_quoted(const QByteArray& bytes, qsizetype at, QByteArray* value,
                             bool* closed);
// A value's pieces after "=", to its line break (returned) or the end.
qsizetype read_value(const QByteArray& bytes, qsizetype at, QByteArray* value, int* open);

// The whole file. Never fails: odd lines are simply no assignments.
parsed_file parse(const QByteArray& bytes);

// ---- What the generator makes of a file ----------------------------------------------------

// name -> text of every counting assignment, the last one of a name winning, in the order the
// names first appear.
std::vector<std::pair<QByteArray, QByteArray>> variables(const parsed_file& file);
std::optional<QByteArray> lookup(const parsed_file& file, const QByteArray& name);

// ---- Writing ---------------------------------------------------------------------------------

// "text" with \ " ` escaped.
QByteArray quoted(const QByteArray& text);
// NAME="text"
QByteArray assignment_line(const QByteArray& name, const QByteArray& text);

// The file with `name` set by `line`, or with every assignment of `name` removed (nullptr).
// The last assignment of the name is replaced in place and earlier ones go, with their line
// breaks; a new line goes at the end on a line of its own. Every other byte stays. nullopt when
// the line can't be placed (the file ends inside a value or a continued comment).
std::optional<QByteArray> edited(const QByteArray& old_bytes, const parsed_file& old_file,
                                 const QByteArray& name, const QByteArray* line);

// ---- Login forms -------------------------------------------------------------------------
// A list that extends the login's own value of NAME is "${NAME}" joined with items by a one-
// character separator, as the list logic sees it. Stored so, it would give a login without NAME
// an empty first item (the current directory, in a search path), so the stores keep it in a form
// the generator expands without one:
//   ${NAME:+${NAME}:}ITEMS                          NAME when the login has it, then the items
//   ${XDG_DATA_DIRS:-/usr/local/share/:/usr/share/}:ITEMS   the login's default when it has none
//   ${MANPATH:+${MANPATH}:}ITEMS:                   a final empty item: the manual's defaults stay

// The value a login takes for `name` when it has none (XDG_DATA_DIRS, XDG_CONFIG_DIRS); empty
// for other names.
QByteArray login_default(const QByteArray& name);
// True for the list variables whose login value counts even where this process lacks them:
// those with a default, and MANPATH.
bool extends_login_value(const QByteArray& name);
// `text` as a store keeps it: "${NAME}" followed by a separator becomes its login form; any
// other text stays as it is.
QByteArray to_login_form(const QByteArray& name, const QByteArray& text);
// The list a login form stands for, "${NAME}:ITEMS" (MANPATH's final separator dropped); any
// other text stays as it is. from_login_form(to_login_form(x)) == x for such lists.
QByteArray from_login_form(const QByteArray& name, const QByteArray& text);

}  // namespace envd
