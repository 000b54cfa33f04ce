// The defaults store in one SQLite file: a table key · type · value.
//
//   data        a BLOB
//   array       JSON text: an array of strings
//   dictionary  JSON text: an object whose members are strings
//
// Keys are any bytes. Text that is not UTF-8 has no JSON form: an array or a dictionary with such
// a string is answered to this process's readers as it was set, but never reaches the file, which
// keeps the value from before. The first refusal of a write is said on standard error, in one
// line; so is the next one after writes have succeeded again.
//
// A value that cannot be read now, because the file is locked (waited for up to 0.1 s), may not be
// read, or fails, is answered as absent. Before one that was answered so is replaced, the store is
// kept as a dated copy beside the file; see SqliteStoreFile.
#pragma once

#include <memory>
#include <string>

#include "platform/DefaultsStore.h"

namespace tavo {

// tavolauncher/defaults.sqlite in XDG_DATA_HOME, which counts only when absolute (XDG Base
// Directory Specification), else in .local/share of the home folder. Empty when there is no home
// folder.
std::string defaultStoreFile();

// Nothing is made or opened before the first call. Any number of stores, in any number of
// processes, may share a file.
std::unique_ptr<DefaultsStore> makeSqliteDefaultsStore(const std::string& file);

}  // namespace tavo
