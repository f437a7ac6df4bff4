// What the process knows of one settings file: its record. One record per real file, shared by
// every view of the file whatever path reached it, says what Qt's settings objects hold of it
// (the current alias and what Qt read through it), and how writes to it stand. The change
// detection that decides whether Qt must read the file again lives here too.
// May use: cfgq_diagnostics, cfgq_file_location, cfgq_file_platform, cfgq_file_private_dir,
//   cfgq_settings_cache.
#pragma once

#include <memory>
#include <mutex>

#include <QByteArray>
#include <QString>

#include "cfgq_file_platform.h"
#include "cfgq_file_private_dir.h"

// What Qt's parsed state on an alias was read from. A file's state (inode, size, stamps) tells
// a rewrite apart, since every write renames a new file into place; but a file system with
// one-second stamps, or a coarse clock, can give a rewrite the old inode number, size and stamps
// within one tick. While the stamp is that recent (not `settled`), the content's hash decides.
struct cfgq_file_view {
  bool valid = false;
  cfgq_platform::file_state state;
  bool settled = false;
  quint64 hash = 0;  // of the bytes, when not settled
};

// One alias of a real file, and what the settings objects opened on it hold of the file.
struct cfgq_file_generation {
  QString alias;              // the path Qt's settings objects open
  bool discarding = false;    // the alias points into the void: writes through it are dropped
  QString refusal;            // why writes are refused (for an object that can't write at all)
  cfgq_file_view known;       // the file as Qt's parsed state on this alias last matched it
  int dirty_objects = 0;      // objects on this alias with changes not yet written
  // Where no link can be made (Windows), the alias is a private copy of the file: Qt reads and
  // writes only the copy, which nobody else opens, and the owner brings the file's content into
  // it before Qt reads (cfgq_refresh_copy) and puts what Qt wrote in place of the file.
  bool copy = false;
  qint64 copy_ms = -1;  // the latest modification time the copy had, which Qt may have seen
  cfgq_platform::file_state copy_state;  // the copy as the owner or Qt's write last left it
};

// Everything the process knows of one real file, whatever path reached it: one record per
// file identity (its directory's device and inode, and its name; the file's own inode changes
// at every write).
//
// Locking. `file_records::m_mutex` guards the table of records only and is never held while
// another lock is taken. A record's `mutex` guards every field below that is not const after
// the record is made (`current`, `generations`, `checked`, `beside`, `swept`, `pending_like`)
// and every generation reached through it, and is held while Qt reads or writes the file
// through an alias. The order is: the file's lock among processes ("<file>.lock") first, then
// the record's mutex, then the keepers' mutex (cfgq_settings_cache.cpp) and Qt's own. No mutex
// is ever held while waiting for the file's lock: a thread that has to wait gives the record's
// mutex back for the wait (file_lock::take) and looks at the record afresh afterwards.
struct cfgq_file_record {
  QString real;        // the file's final path, as the process first reached it
  QByteArray native;   // the same in the file system's encoding
  bool shared = true;  // other processes use it (the temporary file is this process's alone)
  qint64 number = 0;   // names this record's aliases
  qint64 settle_ns = 0;  // how old a stamp must be to tell every later write (see cfgq_file_view)
  std::mutex mutex;
  std::shared_ptr<cfgq_file_generation> current;
  int generations = 0;
  cfgq_platform::file_state checked;  // the file as last found free of damage
  // Where aliases go when the runtime directory can't take them: beside the file.
  std::unique_ptr<cfgq_private_dir> beside;
  bool swept = false;            // gone writers' leftovers beside the file removed once
  cfgq_platform::file_state pending_like;  // owner and mode of a set-aside file, for the next one
};

// Below this much free room a directory can't be trusted with an alias: Qt writes its own lock
// file beside each alias at every write.
constexpr qint64 cfgq_min_private_room = 64 * 1024;

// The record of the real file at `real` (`shared`: other processes use it; the temporary file
// is this process's alone), made at the first call for the file.
std::shared_ptr<cfgq_file_record> cfgq_file_record_for(const QString& real, bool shared);

// The process's private directory in the runtime directory: aliases, Qt's own locks of them,
// and the note that removes the temporary settings file once the process is gone. Empty when
// there is none (aliases then go beside each file).
QString cfgq_process_dir();

// The file that `path` names, through links, and its state (that of the link's target). A link
// is followed only to a file its own owner owns: *refusal says why otherwise.
QString cfgq_real_file(const QString& path, cfgq_platform::file_state* state, QString* refusal);

// A new alias of the record's file; the record's views from now on open it. The old alias stays
// (objects opened on it may still write through it) but loses its keeper. The record's mutex is
// held, as for every function below that takes a record.
std::shared_ptr<cfgq_file_generation> cfgq_new_generation(cfgq_file_record& record);

// A generation that holds nothing and whose writes go nowhere, for a path with nothing usable
// behind it; `reason` says why, when one of its writes is refused.
std::shared_ptr<cfgq_file_generation> cfgq_void_generation(const QString& reason);

// Points `generation`'s alias into the void: whatever its objects write from now on is dropped.
void cfgq_discard_writes(const cfgq_file_record& record, cfgq_file_generation& generation);

// Where `generation`'s alias is a copy, gives it the file's content, unless `known` (the file is
// as Qt's parsed state on the alias last matched it, cfgq_still_known) and the copy is there;
// the copy gets a stamp Qt has not seen on it, so Qt reads it anew. No file leaves no copy.
// False, with the reason, when the file can't be read.
bool cfgq_refresh_copy(const cfgq_file_record& record, cfgq_file_generation& generation,
                       bool known, QString* why);

// False when `generation`'s alias is a copy that is no longer as the owner or Qt's write left it
// (removed, replaced): what Qt read from it since may be nothing.
bool cfgq_copy_intact(const cfgq_file_generation& generation);

// Points the alias `alias` at `target`, replacing the link in one step.
bool cfgq_point_alias(const QString& alias, const QString& target);

// The line ends in the file at `path`, -1 when it can't be read; *ends_with_line_end says
// whether its last byte is one, *hash gets a hash of its bytes.
qint64 cfgq_scan_file(const QString& path, bool* ends_with_line_end, quint64* hash);

// What Qt read on `generation` was the file in `state`: remembered, with the hash of its bytes
// (`hash_of_content` when the caller has it) while its stamp is recent. False when the file
// changed again before the hash was taken.
bool cfgq_remember_view(const cfgq_file_record& record, cfgq_file_generation& generation,
                        const cfgq_platform::file_state& state, const quint64* hash_of_content);

// True when the file, now in `now`, is still what `generation`'s Qt state was read from.
bool cfgq_still_known(const cfgq_file_record& record, cfgq_file_generation& generation,
                      const cfgq_platform::file_state& now);
