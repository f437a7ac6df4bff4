// The command bodies of the Tcl package gui_settings: settings of any section for scripts, and
// two appearance settings of the suite's framework.
#include "cfgq_tcl.h"

#include <cstring>
#include <exception>
#include <string>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "atcl.h"
#include "cfgq.h"
#include "cfgq_tcl_args_auto.h"
#include "gen.h"
#include "mem.h"

namespace {

constexpr int min_font_fields = 7;  // elements of the stored font text split at blanks

// The finished message is handed over as plain text: a '%' in a name is printed as it is.
int report(Tcl_Interp* interp, const std::string& message) {
  atcl_error_msg_impl(interp, message.c_str());
  return TCL_ERROR;
}

// No C++ exception may unwind into Tcl's C frames: it becomes the command's error.
template <typename Body>
int guarded(Tcl_Interp* interp, const char* command, Body&& body) {
  std::string message;
  try {
    return body();
  } catch (const std::exception& failure) {
    MEM_DETAIL::stl_raw_sprintf(&message, "ERROR: %s failed: %s", command, failure.what());
  } catch (...) {
    MEM_DETAIL::stl_raw_sprintf(&message, "ERROR: %s failed.", command);
  }
  return report(interp, message);
}

// Tcl's strings hold U+0000 as the two bytes C0 80 (so that a C string never ends early), which
// are no UTF-8. A text from the interpreter turns them back into U+0000 ...
QString from_tcl(const char* text) {
  QByteArray bytes(text);
  if (bytes.contains('\xC0')) bytes.replace(QByteArrayLiteral("\xC0\x80"), QByteArray(1, '\0'));
  return QString::fromUtf8(bytes);
}

// ... and a text for the interpreter holds U+0000 as Tcl does.
QByteArray to_tcl(QByteArray bytes) {
  if (bytes.contains('\0')) bytes.replace(QByteArray(1, '\0'), QByteArrayLiteral("\xC0\x80"));
  return bytes;
}

void set_result(Tcl_Interp* interp, const QByteArray& text) {
  const QByteArray held = to_tcl(text);
  Tcl_SetStringObj(Tcl_GetObjResult(interp), held.constData(), static_cast<int>(held.size()));
}

int report_empty_type(Tcl_Interp* interp) {
  std::string message;
  MEM_DETAIL::stl_raw_sprintf(&message, "ERROR: The registry type cannot be empty.");
  return report(interp, message);
}

int report_empty_key(Tcl_Interp* interp) {
  std::string message;
  MEM_DETAIL::stl_raw_sprintf(&message, "ERROR: The key cannot be empty.");
  return report(interp, message);
}

int report_absent(Tcl_Interp* interp, const char* name) {
  std::string message;
  MEM_DETAIL::stl_raw_sprintf(&message, "ERROR: The specified key %s does not exist.", name);
  return report(interp, message);
}

// The display form of a stored font text "f0 f1 f2 SIZE BOLD ITALIC f6 ..., FAMILY": style
// words (italic before bold, each only for exactly "1"), the point size, the quoted family.
// A text with fewer than 7 blank-separated elements or without exactly one comma has no such
// form; *ok is then false.
QString font_display_form(const QString& stored, bool* ok) {
  const QStringList field_array = stored.split(QLatin1Char(' '), Qt::KeepEmptyParts);
  const QStringList family = stored.split(QLatin1Char(','), Qt::KeepEmptyParts);
  *ok = field_array.size() >= min_font_fields && family.size() == 2;
  if (!*ok) return QString();
  const bool bold = field_array[4] == QLatin1String("1");
  const bool italic = field_array[5] == QLatin1String("1");
  // One multi-argument arg(): a "%1" inside the family name is never taken as a marker.
  return QStringLiteral("%1%2%3pt \"%4\"")
      .arg(italic ? QStringLiteral("italic ") : QString(),
           bold ? QStringLiteral("bold ") : QString(), field_array[3], family[1].trimmed())
      .trimmed();
}

}  // namespace

int cfgq_get_value_body(Tcl_Interp* interp, const ATCL_ARGS& args) {
  const char* given = args.get_one_arg_pos_option(0);
  const char* name = gen_is_empty_string(given) ? "" : given;

  if (std::strcmp(name, "background_color") == 0) {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::OFCQ, nullptr, nullptr);
    QVariant value;
    if (!view.get_value(QStringLiteral("OFCQ_GENERAL_BACKGROUND_COLOR"), &value)) {
      return report_absent(interp, name);
    }
    // An empty colour text is an answer too.
    atcl_tcl_output(interp, value.toString().toStdString().c_str(), false);
    return TCL_OK;
  }

  if (std::strcmp(name, "system_font") == 0) {
    CFGQ_REGISTRY_KEY view(CFGQ_REGISTRY_KEY::OFCQ, nullptr, nullptr);
    QVariant value;
    const bool found = view.get_value(QStringLiteral("OFCQ_GUI_FONT"), &value);
    const QString stored = value.toString();
    if (!found || stored.isEmpty()) return report_absent(interp, name);
    bool ok = false;
    const QString display = font_display_form(stored, &ok);
    if (!ok) {
      // A damaged font text is reported, not guessed at: the script learns what is stored.
      std::string message;
      MEM_DETAIL::stl_raw_sprintf(&message,
                                  "ERROR: The specified key %s does not hold a font description: "
                                  "\"%s\".",
                                  name, stored.toStdString().c_str());
      return report(interp, message);
    }
    atcl_tcl_output(interp, display.toStdString().c_str(), false);
    return TCL_OK;
  }

  std::string message;
  MEM_DETAIL::stl_raw_sprintf(&message, "ERROR: The specified key %s is unknown.", name);
  return report(interp, message);
}

int cfgq_create_registry_body(Tcl_Interp* interp, const ATCL_ARGS& args) {
  const char* section = args.get_one_arg_pos_option(0);
  const char* key = args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_KEY);
  const char* value = args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_VALUE);
  if (gen_is_empty_string(section)) return report_empty_type(interp);
  if (gen_is_empty_string(key)) return report_empty_key(interp);

  CFGQ_REGISTRY_KEY view(section, nullptr, nullptr);
  const QString text = gen_is_empty_string(value) ? QString() : from_tcl(value);
  // A value refused for its length is not stored, and that is not the script's error.
  view.set_value(from_tcl(key), QVariant(text));
  return TCL_OK;
}

int cfgq_read_registry_body(Tcl_Interp* interp, const ATCL_ARGS& args) {
  const char* section = args.get_one_arg_pos_option(0);
  const char* key = args.get_one_arg_option(CFGQ_AUTO_ARGUMENT_KEY);
  if (gen_is_empty_string(section)) return report_empty_type(interp);
  if (gen_is_empty_string(key)) return report_empty_key(interp);

  CFGQ_REGISTRY_KEY view(section, nullptr, nullptr);
  QVariant value;
  // A missing value reads as the empty text, not as an error.
  if (view.get_value(from_tcl(key), &value)) {
    set_result(interp, value.toString().toLocal8Bit());
  } else {
    set_result(interp, QByteArray());
  }
  return TCL_OK;
}

int cfgq_get_all_keys_body(Tcl_Interp* interp, const ATCL_ARGS& args) {
  const char* section = args.get_one_arg_pos_option(0);
  if (gen_is_empty_string(section)) return report_empty_type(interp);

  CFGQ_REGISTRY_KEY view(section, nullptr, nullptr);
  const QList<QString> keys = view.allKeys();
  if (keys.isEmpty()) {
    set_result(interp, QByteArray());
    return TCL_OK;
  }
  for (const QString& key : keys) {
    Tcl_AppendElement(interp, to_tcl(key.toLocal8Bit()).constData());
  }
  return TCL_OK;
}

int cfgq_clear_registry_body(Tcl_Interp* interp, const ATCL_ARGS& args) {
  const char* section = args.get_one_arg_pos_option(0);
  if (gen_is_empty_string(section)) return report_empty_type(interp);

  CFGQ_REGISTRY_KEY view(section, nullptr, nullptr);
  view.clear_registry_key();
  return TCL_OK;
}

int cfgq_tcl_run(cfgq_tcl_command command, cfgq_tcl_body* body, Tcl_Interp* interp, int argc,
                 const char* argv[]) {
  return guarded(interp, cfgq_tcl_command_name(command), [&] {
    ATCL_ARGS args;
    bool done = false;
    const int status = cfgq_tcl_process_args(command, &args, &done, argc, argv);
    if (status != TCL_OK || done) return status;
    return body(interp, args);
  });
}
