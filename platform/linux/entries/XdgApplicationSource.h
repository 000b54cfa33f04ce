// The applications of the session's desktop entries.
#pragma once

#include <memory>

#include "platform/ApplicationSource.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/entries/XdgEnvironment.h"

namespace tavo {

// Lists what GIO lists (g_app_info_get_all, those that g_app_info_should_show), in a small part of
// its time: the most important file of each desktop-file id masks all others, even when it is
// hidden or broken; what is shown is of type Application, not Hidden, not NoDisplay, wanted in
// one of the current desktops, and its programs (TryExec, Exec) exist.
//
// It differs from GIO where an entry could not be shown or named: one without a Name is not
// listed, nor one whose path is not UTF-8 (it masks all the same). Nor does it wait for a FIFO,
// follow folders in a circle, or read files larger than kLargestDesktopEntry.
//
// `name` is the localized Name as the file says it; `path` is the data folder and what follows.
// Folders and files that cannot be read, or vanish meanwhile, contribute nothing. To be asked on
// any thread, one at a time; with hundreds of files a call reads half of them on a second thread.
//
// Each call leaves in `listed`, where given, what windows of the same entries are recognised by.
std::unique_ptr<ApplicationSource> makeXdgApplicationSource(
    XdgEnvironment environment, std::shared_ptr<DesktopEntryIndex> listed = nullptr);

}  // namespace tavo
