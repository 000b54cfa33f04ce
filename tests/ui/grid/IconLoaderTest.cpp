#include <gtest/gtest.h>

#include "tests/fakes/FakeIconSource.h"
#include "tests/fakes/ManualMainQueue.h"
#include "ui/grid/IconLoader.h"
#include "ui/grid/IconShadow.h"
#include "ui/look/Metrics.h"

namespace tavo {
namespace {

// The loader's workers are real threads. What they post to the main queue runs in awaitArrivals().
class IconLoaderTest : public testing::Test {
protected:
    void SetUp() override {
        heard =
            loader->loaded.subscribe([this](const std::string& path) { arrived.push_back(path); });
    }
    void TearDown() override { source.releaseAll(); }

    bool awaitArrivals(std::size_t count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (arrived.size() < count && std::chrono::steady_clock::now() < deadline) {
            queue.run();
            std::this_thread::yield();
        }
        return arrived.size() >= count;
    }

    // The colour in the middle of the icon of `path`.
    QRgb colourOf(const std::string& path) {
        const QImage* const icon = loader->find(path);
        return icon != nullptr ? icon->pixel(icon->width() / 2, icon->height() / 2) : 0;
    }

    std::shared_ptr<FakeIconSource> owned = std::make_shared<FakeIconSource>();
    FakeIconSource& source = *owned;
    ManualMainQueue queue;
    std::unique_ptr<IconLoader> loader = std::make_unique<IconLoader>(owned, queue);
    std::vector<std::string> arrived;
    Subscription heard;
};

TEST_F(IconLoaderTest, an_icon_is_not_there_before_it_arrives_and_never_waited_for) {
    source.hold();
    loader->want({"/a"}, 1);
    EXPECT_EQ(loader->find("/a"), nullptr);
    source.releaseAll();
    ASSERT_TRUE(awaitArrivals(1));
    EXPECT_NE(loader->find("/a"), nullptr);
}

TEST_F(IconLoaderTest, an_icon_comes_at_its_scale_with_room_for_its_shadow) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        arrived.clear();
        loader->want({"/a"}, scale);
        ASSERT_TRUE(awaitArrivals(1));
        const QImage* const icon = loader->find("/a");
        ASSERT_NE(icon, nullptr);
        const int margin = qRound(iconMargin() * scale);
        EXPECT_EQ(icon->width(), qRound(metrics::kIconSide * scale) + 2 * margin);
        EXPECT_EQ(icon->devicePixelRatio(), scale);
        EXPECT_EQ(icon->pixel(icon->width() / 2, icon->height() / 2),
                  FakeIconSource::colourOf("/a"));
        EXPECT_GT(qAlpha(icon->pixel(icon->width() / 2, icon->height() - margin + 1)), 0);
        EXPECT_EQ(qAlpha(icon->pixel(0, 0)), 0);
    }
}

TEST_F(IconLoaderTest, what_is_no_longer_wanted_and_not_begun_is_never_asked_for) {
    source.hold();
    std::vector<std::string> many;
    for (int i = 0; i < 50; ++i) {
        many.push_back("/old " + std::to_string(i));
    }
    loader->want(many, 1);
    ASSERT_TRUE(source.awaitRequests(1));
    loader->want({"/new"}, 1);
    source.releaseAll();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (loader->find("/new") == nullptr && std::chrono::steady_clock::now() < deadline) {
        queue.run();
        std::this_thread::yield();
    }
    EXPECT_NE(loader->find("/new"), nullptr);
    // When the requests were replaced, each of the two workers had begun at most one old one.
    EXPECT_LE(source.requests().size(), 3U);
}

TEST_F(IconLoaderTest, a_known_icon_is_not_asked_for_again_until_a_refresh) {
    loader->want({"/a"}, 1);
    ASSERT_TRUE(awaitArrivals(1));
    loader->want({"/a"}, 1);
    loader->want({"/b"}, 1);
    ASSERT_TRUE(awaitArrivals(2));
    EXPECT_EQ(source.requests().size(), 2U);
    loader->refresh();
    EXPECT_EQ(source.refreshes(), 1);
    EXPECT_NE(loader->find("/a"), nullptr);
    ASSERT_TRUE(awaitArrivals(3));
    loader->want({"/a"}, 1);
    ASSERT_TRUE(awaitArrivals(4));
    EXPECT_EQ(arrived.back(), "/a");
}

TEST_F(IconLoaderTest, what_is_in_view_is_loaded_anew_by_a_refresh) {
    loader->want({"/a"}, 1);
    ASSERT_TRUE(awaitArrivals(1));
    source.change();
    loader->refresh();
    ASSERT_TRUE(awaitArrivals(2));
    EXPECT_EQ(colourOf("/a"), FakeIconSource::colourOf("/a") + 1);
}

TEST_F(IconLoaderTest, what_a_worker_has_begun_is_not_asked_for_again) {
    source.hold();
    loader->want({"/a"}, 1);
    ASSERT_TRUE(source.awaitRequests(1));
    loader->want({"/a"}, 1);
    loader->want({"/a", "/b"}, 1);
    source.releaseAll();
    ASSERT_TRUE(awaitArrivals(2));
    EXPECT_EQ(source.requests().size(), 2U);
}

TEST_F(IconLoaderTest, an_answer_from_before_a_refresh_never_replaces_one_from_after_it) {
    loader->want({"/a"}, 1);
    ASSERT_TRUE(awaitArrivals(1));
    source.hold();
    loader->refresh();
    ASSERT_TRUE(source.awaitRequests(2));
    source.change();
    loader->refresh();
    ASSERT_TRUE(source.awaitRequests(3));
    source.releaseAll();
    while (colourOf("/a") != FakeIconSource::colourOf("/a") + 1) {
        ASSERT_TRUE(awaitArrivals(arrived.size() + 1));
    }
    loader.reset();
    queue.run();
}

TEST_F(IconLoaderTest, an_icon_that_takes_long_is_the_generic_one_until_it_comes) {
    source.hold();
    loader->want({"/slow", "/slower", "/a", "/b"}, 1);
    ASSERT_TRUE(source.awaitRequests(2));
    queue.advance(std::chrono::milliseconds(800));
    EXPECT_EQ(loader->find("/slow"), nullptr);
    queue.advance(std::chrono::milliseconds(400));
    EXPECT_EQ(colourOf("/slow"), FakeIconSource::kGeneric);
    EXPECT_EQ(colourOf("/slower"), FakeIconSource::kGeneric);
    // New workers ask for the icons that wait behind those of the two late workers.
    ASSERT_TRUE(source.awaitRequests(4));
    source.releaseAll();
    ASSERT_TRUE(awaitArrivals(6));
    EXPECT_EQ(colourOf("/slow"), FakeIconSource::colourOf("/slow"));
    EXPECT_EQ(colourOf("/b"), FakeIconSource::colourOf("/b"));
}

TEST_F(IconLoaderTest, an_icon_that_is_stuck_is_not_asked_for_again) {
    source.holdPath("/slow");
    loader->want({"/slow"}, 1);
    ASSERT_TRUE(source.awaitRequests(1));
    queue.advance(std::chrono::milliseconds(1200));
    for (int i = 0; i < 5; ++i) {
        loader->refresh();
        loader->want({"/slow"}, i % 2 == 0 ? 2 : 1);
    }
    loader->want({"/slow", "/a"}, 1);
    ASSERT_TRUE(awaitArrivals(2));
    EXPECT_EQ(source.requests().size(), 2U);
    EXPECT_EQ(colourOf("/slow"), FakeIconSource::kGeneric);
    // Once the disk answers, the icon is loaded as it is then.
    source.change();
    source.releaseAll();
    while (colourOf("/slow") != FakeIconSource::colourOf("/slow") + 1) {
        ASSERT_TRUE(awaitArrivals(arrived.size() + 1));
    }
}

TEST_F(IconLoaderTest, where_every_worker_waits_all_icons_are_generic_and_nothing_is_looked_after) {
    source.hold();
    std::vector<std::string> paths;
    for (int i = 0; i < 30; ++i) {
        paths.push_back("/" + std::to_string(i));
    }
    loader->want(paths, 1);
    std::size_t begun = 2;
    while (queue.waiting() > 0) {
        ASSERT_TRUE(source.awaitRequests(begun));
        queue.advance(std::chrono::milliseconds(1200));
        begun = source.requests().size();
    }
    for (const std::string& path : paths) {
        EXPECT_EQ(colourOf(path), FakeIconSource::kGeneric);
    }
    EXPECT_LE(source.requests().size(), 10U);
    source.releaseAll();
    while (colourOf("/29") != FakeIconSource::colourOf("/29")) {
        ASSERT_TRUE(awaitArrivals(arrived.size() + 1));
    }
}

TEST_F(IconLoaderTest, the_source_rests_although_one_icon_is_stuck) {
    source.holdPath("/slow");
    loader->want({"/slow", "/a"}, 1);
    ASSERT_TRUE(awaitArrivals(1));
    queue.advance(std::chrono::milliseconds(1200));
    EXPECT_TRUE(source.awaitRest());
}

TEST_F(IconLoaderTest, its_end_does_not_wait_for_a_disk) {
    source.hold();
    loader->want({"/slow"}, 1);
    ASSERT_TRUE(source.awaitRequests(1));
    const auto start = std::chrono::steady_clock::now();
    loader.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(IconLoaderTest, the_source_rests_when_nothing_is_wanted_for_a_while) {
    loader->want({"/a"}, 1);
    ASSERT_TRUE(awaitArrivals(1));
    EXPECT_TRUE(source.awaitRest());
    loader->want({"/b"}, 1);
    ASSERT_TRUE(awaitArrivals(2));
}

TEST_F(IconLoaderTest, on_a_screen_of_another_scale_the_known_icon_stands_in_for_the_right_one) {
    loader->want({"/a"}, 1);
    ASSERT_TRUE(awaitArrivals(1));
    source.hold();
    loader->want({"/a"}, 2);
    ASSERT_NE(loader->find("/a"), nullptr);
    EXPECT_EQ(loader->find("/a")->devicePixelRatio(), 1);
    source.releaseAll();
    ASSERT_TRUE(awaitArrivals(2));
    EXPECT_EQ(loader->find("/a")->devicePixelRatio(), 2);
}

TEST_F(IconLoaderTest, an_icon_of_the_screen_before_never_replaces_the_right_one) {
    loader->want({"/a"}, 2);
    ASSERT_TRUE(awaitArrivals(1));
    source.hold();
    loader->want({"/a"}, 1);
    ASSERT_TRUE(source.awaitRequests(2));
    loader->want({"/a"}, 2);
    const std::size_t waiting = queue.waiting();
    source.releaseAll();
    while (queue.waiting() == waiting) {
        std::this_thread::yield();
    }
    queue.run();
    EXPECT_EQ(arrived.size(), 1U);
    EXPECT_EQ(loader->find("/a")->devicePixelRatio(), 2);
}

TEST_F(IconLoaderTest, keeps_a_bounded_number_and_always_what_is_in_view) {
    std::vector<std::string> all;
    for (int i = 0; i < 500; i += 20) {
        std::vector<std::string> page;
        for (int k = 0; k < 20; ++k) {
            page.push_back("/" + std::to_string(i + k));
        }
        all.insert(all.end(), page.begin(), page.end());
        loader->want(page, 1);
        ASSERT_TRUE(awaitArrivals(all.size()));
        for (const std::string& path : page) {
            EXPECT_NE(loader->find(path), nullptr);
        }
    }
    std::size_t kept = 0;
    for (const std::string& path : all) {
        kept += loader->find(path) != nullptr ? 1U : 0U;
    }
    EXPECT_LT(kept, 150U);
}

TEST_F(IconLoaderTest, an_answer_to_a_loader_that_is_gone_does_nothing) {
    source.hold();
    loader->want({"/a", "/b"}, 1);
    ASSERT_TRUE(source.awaitRequests(1));
    source.releaseAll();
    loader.reset();
    queue.run();
    EXPECT_TRUE(arrived.empty());
}

}  // namespace
}  // namespace tavo
