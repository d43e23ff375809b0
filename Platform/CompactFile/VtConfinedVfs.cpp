#include "VtConfinedVfs_p.h"

#include <sqlite3.h>

#include <string_view>

namespace VTC::detail {
namespace {

constexpr const char* confinedName = "lq-confined";

// The file system underneath, SQLite's default when ours was registered.
sqlite3_vfs* g_base = nullptr;

// SQLite names a database's journal and log by appending these to its name.
bool IsSideFile(sqlite3_filename name)
{
    const std::string_view view = name ? name : "";
    return view.ends_with("-journal") || view.ends_with("-wal");
}

int Open(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags)
{
    if (flags & SQLITE_OPEN_SUPER_JOURNAL) {
        file->pMethods = nullptr;  // tells SQLite there is nothing to close
        return SQLITE_CANTOPEN;
    }
    return g_base->xOpen(g_base, name, file, flags, outFlags);
}

int Delete(sqlite3_vfs*, const char* name, int syncDirectory)
{
    return IsSideFile(name) ? g_base->xDelete(g_base, name, syncDirectory) : SQLITE_IOERR_DELETE;
}

int Access(sqlite3_vfs*, const char* name, int flags, int* result)
{
    if (IsSideFile(name)) return g_base->xAccess(g_base, name, flags, result);
    *result = 0;
    return SQLITE_OK;
}

sqlite3_vfs MakeConfined()
{
    g_base = sqlite3_vfs_find(nullptr);
    sqlite3_vfs vfs = *g_base;  // every other method, with the data it expects
    vfs.pNext = nullptr;
    vfs.zName = confinedName;
    vfs.xOpen = Open;
    vfs.xDelete = Delete;
    vfs.xAccess = Access;
    return vfs;
}

}  // namespace

const char* ConfinedVfsName()
{
    static sqlite3_vfs confined = MakeConfined();
    // Should this fail, opening by the name fails too: never unconfined.
    [[maybe_unused]] static const int registered = sqlite3_vfs_register(&confined, 0);
    return confinedName;
}

}  // namespace VTC::detail
