// The Tcl package gui_settings: its argument enumeration and name tables, the commands' name
// lookups and argument processors, and the package's registration entry points. Internal to the
// library except for the four entry points exported at the end.
// May use: cfgq_export, cfgq_tcl.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <tcl.h>

#include "atcl.h"
#include "cfgq_export.h"

// The arguments of the package's commands. 0 is the answer of a lookup that finds nothing and
// 7 the answer for an empty or missing name; neither has a name.
enum CFGQ_AUTO_ARGUMENT_ENUM : std::int32_t {
  CFGQ_AUTO_ARGUMENT_NONE = 0,
  CFGQ_AUTO_ARGUMENT_H = 1,
  CFGQ_AUTO_ARGUMENT_HELP = 2,
  CFGQ_AUTO_ARGUMENT_LONG_HELP = 3,
  CFGQ_AUTO_ARGUMENT_KEY = 4,
  CFGQ_AUTO_ARGUMENT_TYPE = 5,
  CFGQ_AUTO_ARGUMENT_VALUE = 6,
  CFGQ_AUTO_ARGUMENT_EMPTY = 7
};

// Indexed by CFGQ_AUTO_ARGUMENT_ENUM: "" (never looked up), "h", "help", "long_help", "key",
// "type", "value".
extern const char* const CFGQ_AUTO_ARGUMENT_NAMES[7];

// A chained hash map from a static name text (not copied) to an identifier. A new table has 61
// buckets; it grows only when a reserve asks for more than it has. Not thread-safe: the package
// builds each table once and then only reads it.
class CFGQ_NAME_TABLE {
 public:
  struct ENTRY {
    const char* name;
    std::int32_t id;
    ENTRY* next;  // towards the tail of the bucket's chain
    ENTRY* prev;
  };

  CFGQ_NAME_TABLE();
  ~CFGQ_NAME_TABLE();
  CFGQ_NAME_TABLE(const CFGQ_NAME_TABLE&) = delete;
  CFGQ_NAME_TABLE& operator=(const CFGQ_NAME_TABLE&) = delete;

  // h = h ^ ((h << 5) + (h >> 2) + b) over the name's bytes b taken as signed, from h = 0,
  // modulo 2^32. The bucket is the hash modulo the bucket count.
  static std::uint32_t hash(const char* name);

  // Grows the bucket array to qtl_hash_50_percent_increase_size(5 * (wanted / 4)) when that
  // figure exceeds the bucket count, placing every entry at the head of its new chain.
  void reserve(std::uint32_t wanted);
  // Replaces the identifier of an existing `name`; else puts a new entry at the head of its
  // bucket's chain and reserves for the new entry count. `name` must outlive the table.
  void insert(const char* name, std::int32_t id);
  // The first entry of the name's chain whose name equals `name` (gen_strcmp), or null.
  const ENTRY* find(const char* name) const;

  std::uint32_t bucket_count() const { return m_bucket_count; }
  std::uint32_t size() const { return m_entry_count; }
  // The head of bucket `bucket`'s chain (null when empty); bucket must be below bucket_count().
  const ENTRY* chain(std::uint32_t bucket) const { return m_buckets[bucket]; }

 private:
  void link_at_head(ENTRY* entry);

  std::uint32_t m_bucket_count;
  std::uint32_t m_entry_count;
  std::unique_ptr<ENTRY*[]> m_buckets;            // chain heads; the chains don't own entries
  std::vector<std::unique_ptr<ENTRY>> m_storage;  // owns every entry
};

// The argument name of `id`, 1 to 6. Any other identifier is an internal error.
const char* cfgq_auto_argument_name(CFGQ_AUTO_ARGUMENT_ENUM id);

// The package's commands, in the order of its command table (and of its command objects).
enum cfgq_tcl_command : int {
  CFGQ_TCL_GET_VALUE,        // "gui_settings::get_value"
  CFGQ_TCL_CREATE_REGISTRY,  // "cfgq_create_registry"
  CFGQ_TCL_READ_REGISTRY,    // "cfgq_read_registry"
  CFGQ_TCL_GET_ALL_KEYS,     // "cfgq_get_all_keys"
  CFGQ_TCL_CLEAR_REGISTRY,   // "cfgq_clear_registry"
  CFGQ_TCL_COMMAND_COUNT
};

// The command's name as scripts call it.
const char* cfgq_tcl_command_name(cfgq_tcl_command command);

// The command's option lookup, the one its definition hands to the Tcl command library: a bare
// name (no "-"), possibly null, to the argument it names, exactly or by an unambiguous
// abbreviation; 0 when the command accepts no such name (the positional argument among them), 7
// for an empty or missing name. A command accepts the three help requests and its named options.
CFGQ_AUTO_ARGUMENT_ENUM cfgq_tcl_name_to_id(cfgq_tcl_command command, const char* name);

// The command's argument processor: parses argv (argv[0] the command's name) into *args through
// the command's object, made at the first call and reused afterwards. Returns the parser's
// status; TCL_OK with *done true means help was printed and nothing more is to be done. A null
// `args` is an internal error.
int cfgq_tcl_process_args(cfgq_tcl_command command, ATCL_ARGS* args, bool* done, int argc,
                          const char* const* argv);

extern "C" {
// Tcl's load entry (`load libcfgq.so Gui_settings`): registers the package and returns TCL_OK
// whatever providing it gives. The interpreter is the Tcl command library's, not the argument.
CFGQ_EXPORT int Gui_settings_Init(Tcl_Interp* interp);
// Tcl's unload entry: unregisters the package and returns TCL_OK.
CFGQ_EXPORT int Gui_settings_Unload(Tcl_Interp* interp, int flags);
// Creates the package's five commands in the Tcl command library's interpreter and provides
// "::korvel::gui_settings" 1.0 there. Without an interpreter: an internal error, after the
// package setup has run.
CFGQ_EXPORT void cfgq_gui_settings_register_tcl();
// Removes the package's commands from the interpreter. Without an interpreter: an internal
// error.
CFGQ_EXPORT void cfgq_gui_settings_unregister_tcl();
}
