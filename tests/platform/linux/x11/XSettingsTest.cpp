#include <csignal>

#include <gtest/gtest.h>

#include "platform/linux/x11/XSettings.h"
#include "tests/platform/linux/fixtures/XServer.h"
#include "tests/platform/linux/fixtures/XSettingsBytes.h"

namespace tavo {
namespace {

TEST(XSettings, texts_and_numbers_are_found_among_settings_of_all_types_in_both_byte_orders) {
    for (const bool bigEnd : {false, true}) {
        SCOPED_TRACE(bigEnd ? "big-endian" : "little-endian");
        XSettingsBytes bytes(bigEnd);
        bytes.addInteger("Xft/DPI", 98304).addColor("Gtk/Color").addString("Net/ThemeName", "A");
        bytes.addString("Net/IconThemeName", "Papirus-Dark").addString("Empty", "");
        bytes.addInteger("Net/Below", 0xffffffff);
        const std::string property = bytes.property();
        EXPECT_EQ(xSetting(property, "Net/IconThemeName"), "Papirus-Dark");
        EXPECT_EQ(xSetting(property, "Net/ThemeName"), "A");
        EXPECT_EQ(xSetting(property, "Empty"), "");
        EXPECT_EQ(xSetting(property, "Xft/DPI"), std::nullopt);
        EXPECT_EQ(xNumberSetting(property, "Xft/DPI"), 98304);
        EXPECT_EQ(xNumberSetting(property, "Net/Below"), -1);
        EXPECT_EQ(xNumberSetting(property, "Gtk/Color"), std::nullopt);
        EXPECT_EQ(xNumberSetting(property, "Net/ThemeName"), std::nullopt);
        EXPECT_EQ(xSetting(property, "Missing"), std::nullopt);
    }
}

TEST(XSettings, what_is_cut_off_or_of_unknown_type_answers_nothing) {
    const std::string property =
        XSettingsBytes(false).addString("Net/IconThemeName", "Papirus").property();
    for (std::size_t length = 0; length + 1 < property.size(); ++length) {
        EXPECT_EQ(xSetting(property.substr(0, length), "Net/IconThemeName"), std::nullopt)
            << length;
    }
    std::string unknown = property;
    unknown[12] = 9;
    EXPECT_EQ(xSetting(unknown, "Net/IconThemeName"), std::nullopt);
}

TEST(XSettings, a_count_without_settings_ends) {
    EXPECT_EQ(xSetting(std::string(8, '\0') + std::string(4, '\xff'), "a"), std::nullopt);
}

TEST(XSettings, without_a_display_no_server_is_asked) {
    EXPECT_EQ(readXSettings(""), "");
    EXPECT_EQ(readXSettings(":nonsense"), "");
}

TEST(XSettings, are_read_from_the_settings_manager_of_the_screen) {
    XServer server;
    EXPECT_EQ(readXSettings(server.display()), "") << "no settings are published yet";
    const std::string property =
        XSettingsBytes(false).addString("Net/IconThemeName", "Papirus").property();
    const auto manager = server.publishSettings(property);
    EXPECT_EQ(readXSettings(server.display()), property);
}

TEST(XSettings, a_server_that_has_stopped_is_not_waited_for_without_end) {
    const XServer server;
    ::kill(server.process(), SIGSTOP);
    EXPECT_EQ(readXSettings(server.display()), "");
}

}  // namespace
}  // namespace tavo
