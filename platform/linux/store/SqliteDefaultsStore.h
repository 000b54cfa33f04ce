// The defaults store in one SQLite file: a table key · type · value.
//
//   data        a BLOB
//   array       JSON text: an array of strings
//   dictionary  JSON text: an object whose members are strings
//
// Keys are any bytes. Text that is not UTF-8 has no JSON form: an array or a dictionary with such
// a string is answered to this process's readers as it was set, but never reaches the file, which
// keeps the value from before.
//
// A write that the system refuses is kept and answers reads. It is tried again by the next write,
// every 30 seconds, and when the store ends. The first refusal is said on standard error, in one
// line; so is the next one after writes have succeeded again.
//
// A value that cannot be read now, because the file may not be read, fails, or is locked by another
// process for two seconds, is answered as absent.
#pragma once

#include <memory>
#include <string>

#include "platform/DefaultsStore.h"
#include "platform/MainQueue.h"

namespace tavo {

// The path of tavolauncher/defaults.sqlite in XDG_DATA_HOME, which counts only when absolute (XDG
// Base Directory Specification), else in .local/share of the home folder. Empty when there is no
// home folder.
std::string defaultStoreFile();

// Nothing is made or opened before the first call. Any number of stores, in any number of
// processes, may share a file. `queue` runs the tries every 30 seconds and must outlive the store;
// null: there are no such tries.
std::unique_ptr<DefaultsStore> makeSqliteDefaultsStore(const std::string& file,
                                                       MainQueue* queue = nullptr);

}  // namespace tavo
