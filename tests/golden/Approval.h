// Compares texts and pictures with those that were approved.
#pragma once

#include <QImage>
#include <QString>
#include <optional>

#include <gtest/gtest.h>

namespace tavo {

enum class Look;

struct ApprovalFolders {
    QString approved;  // contains "texts" and "baselines"
    QString evidence;  // receives what was shown when a test fails
    // Set by the command that approves. Then nothing is compared and everything that is shown is
    // written here; where it equals what was approved, the approved file is copied.
    QString recorded = {};
};

// The folders that this program uses.
ApprovalFolders& approvalFolders();

// Two lines that name the versions of Qt and of the font, on which every pixel depends.
QString madeWith();

// The file that holds the madeWith() of the approved pictures. Relative to the folder `approved`.
inline constexpr QLatin1String kMadeWith("/baselines/made-with.txt");

// The folder of pictures for this version of Qt, the look and the scale. Relative to the folder
// `approved`, with a slash at the end.
QString appearanceFolder(Look look);

// Why pictures cannot be compared here: this Qt or font is not the one they were made with. Absent
// where they can be compared.
std::optional<QString> whyPicturesDiffer(const ApprovalFolders& folders);

// Whether `text` equals the one approved under this name. If not, it is written to NAME.actual.txt.
testing::AssertionResult isApproved(const ApprovalFolders& folders, const QString& name,
                                    const QString& text);

// Whether `picture` equals the one approved under this name. Each channel of a pixel may differ by
// two of its 256 levels, because processors round differently. If it differs more, it is written to
// NAME.actual.png, beside NAME.diff.png with the differences in red.
testing::AssertionResult isApproved(const ApprovalFolders& folders, const QString& name, Look look,
                                    const QImage& picture);

}  // namespace tavo
