#pragma once
// Private to the container library.

namespace VTC::detail {

// The name of an SQLite file system that opens, probes and deletes no file
// but a database and its own journal and write-ahead log. A journal that
// travels with a container can name any other file as its super-journal,
// which SQLite would read whole and then delete; under this file system such
// a name does not exist, and the journal counts as stale, as SQLite treats a
// journal whose super-journal is gone. Registered on first use.
const char* ConfinedVfsName();

}  // namespace VTC::detail
