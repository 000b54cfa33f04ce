// What every ApplicationSource promises. One source file of a test program includes this and
// instantiates the tests with makers of worlds.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/ApplicationSource.h"

namespace tavo {

// Applications of one test, and the source that finds them.
class ApplicationSourceWorld {
public:
    virtual ~ApplicationSourceWorld() = default;

    virtual ApplicationSource& source() = 0;

    // Installs an application under a key of the test's choice, in place of the one with the same
    // key. Returns it as source() must find it.
    virtual FoundApplication install(const std::string& key, const std::string& name) = 0;
    virtual void uninstall(const std::string& key) = 0;
};

struct ApplicationSourceCase {
    std::string name;
    std::function<std::unique_ptr<ApplicationSourceWorld>()> makeWorld;
};

inline void PrintTo(const FoundApplication& application, std::ostream* stream) {
    *stream << application.name << " (" << application.path << ")";
}

inline void PrintTo(const ApplicationSourceCase& value, std::ostream* stream) {
    *stream << value.name;
}

class ApplicationSourceContract : public testing::TestWithParam<ApplicationSourceCase> {
protected:
    [[nodiscard]] std::vector<FoundApplication> found() { return world_->source().applications(); }

    std::unique_ptr<ApplicationSourceWorld> world_ = GetParam().makeWorld();
};

TEST_P(ApplicationSourceContract, finds_nothing_where_nothing_is_installed) {
    EXPECT_THAT(found(), testing::IsEmpty());
}

TEST_P(ApplicationSourceContract, finds_each_application_once_with_its_name_and_path) {
    const FoundApplication editor = world_->install("editor", "Editor");
    const FoundApplication music = world_->install("music", "Musica");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(editor, music));
    EXPECT_NE(editor.path, music.path);
}

TEST_P(ApplicationSourceContract, two_applications_of_one_name_are_two) {
    const FoundApplication first = world_->install("first", "Editor");
    const FoundApplication second = world_->install("second", "Editor");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(first, second));
}

TEST_P(ApplicationSourceContract, every_call_looks_anew) {
    const FoundApplication editor = world_->install("editor", "Editor");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(editor));
    const FoundApplication music = world_->install("music", "Musica");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(editor, music));
    world_->uninstall("editor");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(music));
    const FoundApplication renamed = world_->install("music", "Suoni");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(renamed));
}

TEST_P(ApplicationSourceContract, a_name_is_plain_text_whatever_it_holds) {
    const FoundApplication markup = world_->install("markup", "<b>A</b> & \xc3\xa9 \"B\"");
    const FoundApplication rightToLeft = world_->install("mark",
                                                         "\xe2\x80\xae"
                                                         "A\x01\x7f");
    EXPECT_THAT(found(), testing::UnorderedElementsAre(markup, rightToLeft));
}

inline std::string nameOfCase(const testing::TestParamInfo<ApplicationSourceCase>& info) {
    return info.param.name;
}

}  // namespace tavo
