#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/golden/Approval.h"
#include "tests/golden/Stage.h"

namespace tavo {
namespace {

// Uses temporary folders of approved files.
class ApprovalTest : public testing::Test {
protected:
    static QImage plain(int gray, QSize size = {4, 3}) {
        QImage image(size, QImage::Format_RGB32);
        image.fill(QColor(gray, gray, gray));
        return image;
    }

    testing::AssertionResult shown(const QImage& picture) const {
        return isApproved(folders, QStringLiteral("scene"), Look::Light, picture);
    }
    testing::AssertionResult shown(const QString& text) const {
        return isApproved(folders, QStringLiteral("scene"), text);
    }

    // Approves `what` as the approving command does: by recording it into the approved folder.
    template<typename Shown>
    void approve(const Shown& what) {
        folders.recorded = folders.approved;
        ASSERT_TRUE(shown(what));
        folders.recorded.clear();
    }

    [[nodiscard]] QString picture(const QString& root, const QString& kind) const {
        return root + appearanceFolder(Look::Light) + QStringLiteral("scene") + kind +
               QStringLiteral(".png");
    }
    [[nodiscard]] QString actualPicture() const {
        return picture(folders.evidence, QStringLiteral(".actual"));
    }
    [[nodiscard]] QString differencePicture() const {
        return picture(folders.evidence, QStringLiteral(".diff"));
    }
    static QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir temporary;
    ApprovalFolders folders{.approved = temporary.filePath(QStringLiteral("approved")),
                            .evidence = temporary.filePath(QStringLiteral("evidence"))};
};

TEST_F(ApprovalTest, a_text_that_is_not_approved_fails_and_is_written_down) {
    EXPECT_FALSE(shown(QStringLiteral("uno\n")));
    EXPECT_EQ(contents(folders.evidence + QStringLiteral("/texts/scene.actual.txt")), "uno\n");
}

TEST_F(ApprovalTest, another_text_than_the_approved_one_fails_until_it_is_approved) {
    approve(QStringLiteral("uno\n"));
    EXPECT_TRUE(shown(QStringLiteral("uno\n")));
    EXPECT_FALSE(shown(QStringLiteral("due\n")));
    approve(QStringLiteral("due\n"));
    EXPECT_TRUE(shown(QStringLiteral("due\n")));
    EXPECT_FALSE(QFile::exists(folders.evidence + QStringLiteral("/texts/scene.actual.txt")));
}

TEST_F(ApprovalTest, a_picture_that_is_not_approved_fails_and_is_written_down) {
    EXPECT_FALSE(shown(plain(100)));
    EXPECT_EQ(QImage(actualPicture()).pixelColor(0, 0), QColor(100, 100, 100));
}

TEST_F(ApprovalTest, two_levels_of_a_channel_are_no_difference_and_three_are) {
    approve(plain(100));
    QImage near = plain(100);
    near.setPixelColor(1, 1, QColor(98, 100, 102));
    EXPECT_TRUE(shown(near));
    near.setPixelColor(1, 1, QColor(100, 100, 103));
    EXPECT_FALSE(shown(near));
}

TEST_F(ApprovalTest, a_difference_shows_in_red_and_goes_when_the_picture_is_right_again) {
    approve(plain(100));
    QImage other = plain(100);
    other.setPixelColor(2, 1, Qt::black);
    const auto result = shown(other);
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find(differencePicture().toStdString()),
              std::string::npos);
    EXPECT_EQ(QImage(differencePicture()).pixelColor(2, 1), QColor(Qt::red));
    EXPECT_NE(QImage(differencePicture()).pixelColor(1, 1), QColor(Qt::red));
    EXPECT_TRUE(shown(plain(100)));
    EXPECT_FALSE(QFile::exists(actualPicture()));
    EXPECT_FALSE(QFile::exists(differencePicture()));
}

TEST_F(ApprovalTest, a_picture_of_another_size_fails) {
    approve(plain(100));
    EXPECT_FALSE(shown(plain(100, {4, 4})));
    EXPECT_FALSE(shown(plain(100, {3, 3})));
}

TEST_F(ApprovalTest, a_picture_that_cannot_be_read_fails) {
    approve(plain(100));
    QFile file(picture(folders.approved, {}));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no picture");
    file.close();
    EXPECT_FALSE(shown(plain(100)));
}

TEST_F(ApprovalTest, approving_leaves_a_picture_alone_that_is_right_to_the_eye) {
    approve(plain(100));
    const QByteArray before = contents(picture(folders.approved, {}));
    ASSERT_FALSE(before.isEmpty());
    approve(plain(101));
    EXPECT_EQ(contents(picture(folders.approved, {})), before);
    approve(plain(110));
    EXPECT_NE(contents(picture(folders.approved, {})), before);
}

TEST_F(ApprovalTest, pictures_made_with_the_same_qt_and_font_are_compared) {
    EXPECT_EQ(whyPicturesDiffer(folders), std::nullopt);
    approve(plain(100));
    EXPECT_EQ(whyPicturesDiffer(folders), std::nullopt);
}

TEST_F(ApprovalTest, pictures_made_with_another_qt_are_not_compared_and_the_reason_names_both) {
    approve(plain(100));
    QFile note(folders.approved + kMadeWith);
    ASSERT_TRUE(note.open(QIODevice::WriteOnly));
    note.write("Qt 1.2.3\nfont Other 4\n");
    note.close();
    const auto reason = whyPicturesDiffer(folders);
    ASSERT_TRUE(reason);
    EXPECT_TRUE(reason->contains(QStringLiteral("Qt 1.2.3, font Other 4")));
    EXPECT_TRUE(reason->contains(QString::fromUtf8(qVersion())));
}

}  // namespace
}  // namespace tavo
