#include <gtest/gtest.h>

#include "platform/linux/entries/DesktopFileId.h"

namespace tavo {
namespace {

TEST(DesktopFileId, what_ends_as_entries_do_is_one_and_loses_only_that_end) {
    struct Row {
        const char* name;
        bool isEntry;
        const char* without;
    };
    const Row kRows[] = {
        {"org.example.App.desktop", true, "org.example.App"},
        {"/usr/share/applications/app.desktop", true, "/usr/share/applications/app"},
        {"app.desktop.desktop", true, "app.desktop"},
        {".desktop", true, ""},
        {"desktop", false, "desktop"},
        {"app.desktop/", false, "app.desktop/"},
        {"app.DESKTOP", false, "app.DESKTOP"},
        {"", false, ""},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(isDesktopFileName(row.name), row.isEntry);
        EXPECT_EQ(withoutEntrySuffix(row.name), row.without);
    }
}

}  // namespace
}  // namespace tavo
