// What was approved once, and whether it is still so.
#pragma once

#include <QImage>
#include <QString>
#include <optional>

#include <gtest/gtest.h>

namespace tavo {

enum class Look;

struct ApprovalFolders {
    QString approved;  // "texts" and "baselines"
    QString evidence;  // where a failure leaves what was shown
    // Set by the command that approves: everything shown is written here and nothing is compared;
    // as it was approved where it still is so, else as it is.
    QString recorded = {};
};

// Those of this program.
ApprovalFolders& approvalFolders();

// "Qt" and "font" with the versions that every pixel depends on and that are not ours.
QString madeWith();

// Below the approved folder: what the pictures there were made with.
inline constexpr QLatin1String kMadeWith("/baselines/made-with.txt");

// Below the approved folder, with a slash at the end: the toolkit's version, the look, the scale.
QString appearanceFolder(Look look);

// Why this machine draws other pictures than those that were approved; none when it does not, or
// when there is nothing to compare with.
std::optional<QString> whyPicturesDiffer(const ApprovalFolders& folders);

// Whether `text` is the one that was approved under this name. One that is not is written to
// NAME.actual.txt.
testing::AssertionResult isApproved(const ApprovalFolders& folders, const QString& name,
                                    const QString& text);

// The same of a picture, pixel by pixel; a channel may be off by two levels of its 256, which
// nobody sees: processors round differently. One that is not as approved is written to
// NAME.actual.png, beside NAME.diff.png that shows in red where.
testing::AssertionResult isApproved(const ApprovalFolders& folders, const QString& name, Look look,
                                    const QImage& picture);

}  // namespace tavo
