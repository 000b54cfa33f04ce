#include <QDir>
#include <QStringList>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include "tests/golden/Approval.h"
#include "tests/golden/Outline.h"
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

class Pictures : public testing::TestWithParam<Row> {
protected:
    void SetUp() override {
        if (const auto reason = whyPicturesDiffer(approvalFolders())) {
            GTEST_SKIP() << reason->toStdString();
        }
    }
};

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

TEST(ApprovedFiles, are_those_of_the_scenes_and_no_others) {
    QStringList texts;
    QStringList pictures;
    for (const Scene& scene : scenes()) {
        texts << QString::fromUtf8(scene.name) + QStringLiteral(".txt");
        pictures << QString::fromUtf8(scene.name) + QStringLiteral(".png");
    }
    texts.sort();
    pictures.sort();
    EXPECT_EQ(filesIn(QStringLiteral("/texts")), texts);
    if (const auto reason = whyPicturesDiffer(approvalFolders())) {
        GTEST_SKIP() << reason->toStdString();
    }
    EXPECT_EQ(filesIn(appearanceFolder(Look::Light)), pictures);
    EXPECT_EQ(filesIn(appearanceFolder(Look::Dark)), pictures);
}

INSTANTIATE_TEST_SUITE_P(OneScale, Pictures, testing::ValuesIn(rows(false)), nameOf);
INSTANTIATE_TEST_SUITE_P(EveryScale, Pictures, testing::ValuesIn(rows(true)), nameOf);

}  // namespace
}  // namespace tavo
