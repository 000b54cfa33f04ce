#include <QDir>
#include <QStringList>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include "tests/golden/Approval.h"
#include "tests/golden/Outline.h"
#include "tests/golden/PinnedFont.h"
#include "tests/golden/Scenes.h"
#include "tests/golden/Stage.h"

namespace tavo {
namespace {

class Texts : public testing::TestWithParam<Scene> {};

TEST_P(Texts, say_what_was_approved) {
    Stage stage(Look::Light);
    GetParam().arrange(stage);
    EXPECT_TRUE(isApproved(approvalFolders(), QString::fromUtf8(GetParam().name), outline(stage)));
}

INSTANTIATE_TEST_SUITE_P(OneScale, Texts, testing::ValuesIn(scenes()),
                         [](const auto& row) { return std::string(row.param.name); });

struct Row {
    Scene scene;
    Look look;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.scene.name << (row.look == Look::Dark ? ", dark" : ", light");
}

// Pictures are approved for one version of Qt and one of the font Inter. With any other version the
// tests of pictures are skipped, and say which versions are meant and which are here.
class PictureTest : public testing::Test {
protected:
    void SetUp() override {
        if (const auto reason = whyPicturesDiffer(approvalFolders())) {
            GTEST_SKIP() << reason->toStdString();
        }
    }
};

// No change of made-with.txt, or of what is compared with it, may skip the pictures on the system
// that they are meant for.
TEST(ApprovedPictures, are_compared_with_the_qt_and_the_inter_of_debian_12) {
    if (QLatin1String(qVersion()) != QLatin1String("6.4.2")) {
        GTEST_SKIP() << "another Qt than that of Debian 12: " << qVersion();
    }
    ASSERT_TRUE(pinnedFont()) << "not installed: the font Inter";
    if (!pinnedFont()->startsWith(QStringLiteral("Inter 3.019 "))) {
        GTEST_SKIP() << "another font than that of Debian 12: " << pinnedFont()->toStdString();
    }
    EXPECT_EQ(whyPicturesDiffer(approvalFolders()), std::nullopt);
}

class Pictures : public PictureTest, public testing::WithParamInterface<Row> {};

TEST_P(Pictures, look_as_approved) {
    Stage stage(GetParam().look);
    GetParam().scene.arrange(stage);
    EXPECT_TRUE(isApproved(approvalFolders(), QString::fromUtf8(GetParam().scene.name),
                           GetParam().look, stage.picture()));
}

std::vector<Row> rows(bool everyScale) {
    std::vector<Row> rows;
    for (const Scene& scene : scenes()) {
        if (scene.everyScale == everyScale) {
            rows.push_back({scene, Look::Light});
            rows.push_back({scene, Look::Dark});
        }
    }
    return rows;
}

std::string nameOf(const testing::TestParamInfo<Row>& row) {
    return std::string(row.param.scene.name) + (row.param.look == Look::Dark ? "_dark" : "_light");
}

QStringList filesIn(const QString& folder) {
    QStringList names = QDir(approvalFolders().approved + folder).entryList(QDir::Files);
    names.sort();
    return names;
}

QStringList filesOfTheScenes(const QString& ending) {
    QStringList names;
    for (const Scene& scene : scenes()) {
        names << QString::fromUtf8(scene.name) + ending;
    }
    names.sort();
    return names;
}

TEST(ApprovedTexts, are_those_of_the_scenes_and_no_others) {
    EXPECT_EQ(filesIn(QStringLiteral("/texts")), filesOfTheScenes(QStringLiteral(".txt")));
}

using PictureFiles = PictureTest;

TEST_F(PictureFiles, are_those_of_the_scenes_and_no_others) {
    const QStringList pictures = filesOfTheScenes(QStringLiteral(".png"));
    EXPECT_EQ(filesIn(appearanceFolder(Look::Light)), pictures);
    EXPECT_EQ(filesIn(appearanceFolder(Look::Dark)), pictures);
}

INSTANTIATE_TEST_SUITE_P(OneScale, Pictures, testing::ValuesIn(rows(false)), nameOf);
INSTANTIATE_TEST_SUITE_P(EveryScale, Pictures, testing::ValuesIn(rows(true)), nameOf);

}  // namespace
}  // namespace tavo
