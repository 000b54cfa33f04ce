#include "tests/golden/Approval.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>

#include "tests/golden/PinnedFont.h"
#include "tests/golden/Stage.h"

namespace tavo {
namespace {

constexpr int kTolerance = 2;

std::optional<QByteArray> contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

bool write(const QString& path, const QByteArray& contents) {
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(contents) == contents.size();
}

bool write(const QString& path, const QImage& picture) {
    // 0 selects PNG's strongest compression, which loses nothing.
    return QDir().mkpath(QFileInfo(path).path()) && picture.save(path, "PNG", 0);
}

// Where a failed test writes what was shown: the path without its ending. Deletes the files of
// earlier runs.
QString evidence(const ApprovalFolders& folders, const QString& relative) {
    QString path = folders.evidence + relative;
    for (const char* const kind : {".actual.txt", ".actual.png", ".diff.png"}) {
        QFile::remove(path + QString::fromUtf8(kind));
    }
    return path;
}

QString said(bool written, const QString& path) {
    return written ? path : path + QStringLiteral(" (which could not be written)");
}

// A message about the first line in which the two texts differ.
QByteArray firstDifference(const QByteArray& approved, const QByteArray& actual) {
    const QList<QByteArray> before = approved.split('\n');
    const QList<QByteArray> now = actual.split('\n');
    qsizetype line = 0;
    while (line < before.size() && line < now.size() && before[line] == now[line]) {
        ++line;
    }
    return "  from line " + QByteArray::number(line + 1) + "\n  approved: " + before.value(line) +
           "\n  shown:    " + now.value(line);
}

struct Difference {
    int pixels = 0;
    int greatest = 0;  // the largest difference of any channel
    QRect where;
    QImage shown;  // the approved picture, faded, with the differences in red
};

Difference difference(const QImage& approved, const QImage& actual) {
    Difference found;
    const QRect both = approved.rect() | actual.rect();
    const QRect common = approved.rect() & actual.rect();
    found.shown = QImage(both.size(), QImage::Format_RGB32);
    found.shown.fill(Qt::red);
    found.pixels = both.width() * both.height() - common.width() * common.height();
    for (int y = 0; y < common.height(); ++y) {
        const auto* const one = reinterpret_cast<const QRgb*>(approved.constScanLine(y));
        const auto* const other = reinterpret_cast<const QRgb*>(actual.constScanLine(y));
        auto* const shown = reinterpret_cast<QRgb*>(found.shown.scanLine(y));
        for (int x = 0; x < common.width(); ++x) {
            const int off = std::max({std::abs(qRed(one[x]) - qRed(other[x])),
                                      std::abs(qGreen(one[x]) - qGreen(other[x])),
                                      std::abs(qBlue(one[x]) - qBlue(other[x]))});
            found.greatest = std::max(found.greatest, off);
            if (off <= kTolerance) {
                const int faded = 160 + qGray(one[x]) * 3 / 8;
                shown[x] = qRgb(faded, faded, faded);
            } else {
                ++found.pixels;
                found.where |= QRect(x, y, 1, 1);
            }
        }
    }
    return found;
}

}  // namespace

ApprovalFolders& approvalFolders() {
    static ApprovalFolders folders{.approved = QStringLiteral(TAVO_TEST_DATA "/golden"),
                                   .evidence = QStringLiteral(TAVO_GOLDEN_EVIDENCE)};
    return folders;
}

QString madeWith() {
    return QStringLiteral("Qt %1\nfont %2\n")
        .arg(QString::fromUtf8(qVersion()), pinnedFont().value_or(QStringLiteral("none")));
}

QString appearanceFolder(Look look) {
    const QStringList version = QString::fromUtf8(qVersion()).split(u'.');
    return QStringLiteral("/baselines/qt%1.%2-%3-%4x/")
        .arg(version.value(0), version.value(1),
             look == Look::Dark ? QStringLiteral("dark") : QStringLiteral("light"),
             QString::number(qApp->devicePixelRatio()));
}

std::optional<QString> whyPicturesDiffer(const ApprovalFolders& folders) {
    const auto approved = contentsOf(folders.approved + kMadeWith);
    if (!folders.recorded.isEmpty() || !approved || *approved == madeWith().toUtf8()) {
        return std::nullopt;
    }
    const auto inOneLine = [](const QString& lines) {
        return lines.trimmed().replace(u'\n', QStringLiteral(", "));
    };
    return QStringLiteral("the pictures were made with %1; here is %2")
        .arg(inOneLine(QString::fromUtf8(*approved)), inOneLine(madeWith()));
}

testing::AssertionResult isApproved(const ApprovalFolders& folders, const QString& name,
                                    const QString& text) {
    const QString relative = QStringLiteral("/texts/") + name;
    const auto approved = contentsOf(folders.approved + relative + QStringLiteral(".txt"));
    const QByteArray actual = text.toUtf8();
    if (!folders.recorded.isEmpty()) {
        return write(folders.recorded + relative + QStringLiteral(".txt"), actual)
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "could not be recorded";
    }
    const QString path = evidence(folders, relative) + QStringLiteral(".actual.txt");
    if (approved == actual) {
        return testing::AssertionSuccess();
    }
    const QString place = said(write(path, actual), path);
    if (!approved) {
        return testing::AssertionFailure()
               << "no text was approved; this is what is shown, also in " << place.toStdString()
               << "\n"
               << actual.toStdString();
    }
    return testing::AssertionFailure() << "not as approved; see " << place.toStdString() << "\n"
                                       << firstDifference(*approved, actual).toStdString();
}

testing::AssertionResult isApproved(const ApprovalFolders& folders, const QString& name, Look look,
                                    const QImage& picture) {
    const QString relative = appearanceFolder(look) + name;
    const QString approvedPath = folders.approved + relative + QStringLiteral(".png");
    QImage actual = picture.convertToFormat(QImage::Format_RGB32);
    actual.setDevicePixelRatio(1);
    const QImage approved = QImage(approvedPath).convertToFormat(QImage::Format_RGB32);
    const Difference found = difference(approved, actual);
    const bool same = !approved.isNull() && found.pixels == 0;
    if (!folders.recorded.isEmpty()) {
        const QString path = folders.recorded + relative + QStringLiteral(".png");
        const auto known = same ? contentsOf(approvedPath) : std::nullopt;
        const bool noted = write(folders.recorded + kMadeWith, madeWith().toUtf8());
        return noted && (known ? write(path, *known) : write(path, actual))
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "could not be recorded";
    }
    const QString path = evidence(folders, relative);
    if (same) {
        return testing::AssertionSuccess();
    }
    const QString actualPath = path + QStringLiteral(".actual.png");
    const QString place = said(write(actualPath, actual), actualPath);
    if (approved.isNull()) {
        return testing::AssertionFailure()
               << "no picture was approved (" << approvedPath.toStdString()
               << "); what is shown is in " << place.toStdString();
    }
    const QString diffPath = path + QStringLiteral(".diff.png");
    const QRect& where = found.where;
    return testing::AssertionFailure()
           << "not as approved: " << actual.width() << " x " << actual.height() << " instead of "
           << approved.width() << " x " << approved.height() << " pixels, " << found.pixels
           << " of them differ, by up to " << found.greatest << " levels, within x " << where.left()
           << " to " << where.right() << " and y " << where.top() << " to " << where.bottom()
           << "\n  approved: " << approvedPath.toStdString()
           << "\n  shown:    " << place.toStdString()
           << "\n  where:    " << said(write(diffPath, found.shown), diffPath).toStdString();
}

}  // namespace tavo
