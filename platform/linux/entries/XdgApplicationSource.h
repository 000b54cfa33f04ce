// The applications of the session's desktop entries.
#pragma once

#include <memory>

#include "platform/ApplicationSource.h"
#include "platform/linux/entries/DesktopEntryEnvironment.h"
#include "platform/linux/entries/DesktopEntryIndex.h"

namespace tavo {

// Lists what GIO lists (the entries of g_app_info_get_all that g_app_info_should_show), in a
// fraction of its time. The most important file of each desktop-file id masks all others, even when
// it is hidden or broken. An entry is listed when its type is Application, it is neither Hidden nor
// NoDisplay, one of the current desktops shows it, and its programs (TryExec, Exec) exist.
//
// Differs from GIO where an entry could not be shown: one without a Name is not listed, nor one
// whose path is not UTF-8; both still mask others. Nor does it wait for a FIFO, follow folders in a
// circle, or read files larger than kLargestDesktopEntry.
//
// `name` is the localized Name as the file has it; `path` begins with the data folder. Folders and
// files that cannot be read, or vanish meanwhile, contribute nothing. Any thread, one call at a
// time; a call for 500 files or more reads half of them on a second thread.
//
// Each call replaces the contents of `listed`, unless it is null, by the facts by which the windows
// of the listed entries are recognised.
std::unique_ptr<ApplicationSource> makeXdgApplicationSource(
    DesktopEntryEnvironment environment, std::shared_ptr<DesktopEntryIndex> listed = nullptr);

}  // namespace tavo
