#include "ui/editor/ParentCategoryPicker.h"

#include <QAbstractItemView>
#include <QAbstractListModel>
#include <QWheelEvent>
#include <algorithm>
#include <utility>
#include <vector>

#include "ui/accessibility/Announcer.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

QString subcategoryText(const LauncherCategory& parent) {
    return texts::kSubcategoryOf.toString() + displayText(parent.name);
}

}  // namespace

// The entries, read from the candidates on demand: with thousands of categories, a copy in each
// row's combo box would take millions of strings.
class ParentCategoryPicker::Entries final : public QAbstractListModel {
public:
    Entries(const Candidates& candidates, QObject* parent)
        : QAbstractListModel(parent), candidates_(candidates) {}

    // To be called after the candidates have changed. Until then entries that are gone read as
    // empty.
    void refresh() {
        beginResetModel();
        count_ = static_cast<int>(candidates_().size());
        endResetModel();
    }

    // The id of the parent that the entry at `index` stands for; null for the top level.
    [[nodiscard]] const std::string* parentAt(int index) const {
        const LauncherCategory* const category = candidateAt(index);
        return category == nullptr ? nullptr : &category->id;
    }

    // The entry that stands for `parent`; -1 if there is none.
    [[nodiscard]] int indexOf(const std::optional<std::string>& parent) const {
        if (!parent) {
            return 0;
        }
        const std::span<const LauncherCategory> candidates = candidates_();
        const auto found =
            std::find_if(candidates.begin(), candidates.end(),
                         [&](const auto& category) { return category.id == *parent; });
        return found == candidates.end() ? -1 : static_cast<int>(found - candidates.begin()) + 1;
    }

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : count_ + 1;
    }

    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole) {
            return {};
        }
        if (index.row() == 0) {
            return texts::kTopLevel.toString();
        }
        const LauncherCategory* const category = candidateAt(index.row());
        return category == nullptr ? QString() : subcategoryText(*category);
    }

private:
    [[nodiscard]] const LauncherCategory* candidateAt(int index) const {
        const std::span<const LauncherCategory> candidates = candidates_();
        const auto position = static_cast<std::size_t>(index) - 1;
        return index > 0 && position < candidates.size() ? &candidates[position] : nullptr;
    }

    const Candidates& candidates_;
    int count_ = 0;
};

ParentCategoryPicker::ParentCategoryPicker(Binding<std::optional<std::string>> parentID,
                                           Candidates candidates, QWidget* parent)
    : QComboBox(parent),
      parentID_(std::move(parentID)),
      candidates_(std::move(candidates)),
      entries_(new Entries(candidates_, this)) {
    setAccessibleRole(*this, QAccessible::ComboBox);
    // The default policy measures all entries before the first frame.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(1);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setFocusPolicy(Qt::TabFocus);
    // Set before the combo box has entries, because a change of the font measures all of them.
    useInterfaceFont(*this, metrics::kCaption);
    setModel(entries_);
    connect(this, &QComboBox::activated, this, [this](int index) {
        const std::string* const picked = entries_->parentAt(index);
        parentID_.set(picked == nullptr ? std::nullopt : std::optional(*picked));
        updateGeometry();
    });
    refresh();
}

void ParentCategoryPicker::refresh() {
    entries_->refresh();
    setCurrentIndex(entries_->indexOf(parentID_.get()));
    updateGeometry();
    announceItems(*this);
}

const std::string& ParentCategoryPicker::itemKey(int index) const {
    static const std::string topLevel;
    const std::string* const parentID = entries_->parentAt(index);
    return parentID == nullptr ? topLevel : *parentID;
}

void ParentCategoryPicker::pressItem(int index) {
    setCurrentIndex(index);
    Q_EMIT activated(index);
    hidePopup();
}

void ParentCategoryPicker::showPopup() {
    setExpanded(true);
    QComboBox::showPopup();
    view()->window()->installEventFilter(this);
}

// The list also closes without hidePopup(), when another window takes the focus.
bool ParentCategoryPicker::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Hide && object == view()->window()) {
        setExpanded(false);
    }
    return QComboBox::eventFilter(object, event);
}

void ParentCategoryPicker::setExpanded(bool expanded) {
    if (std::exchange(expanded_, expanded) != expanded) {
        announceItemsExpanded(*this);
    }
}

// Announces an entry that a key has chosen: Qt tells accessibility clients of no value that is a
// text. While the list is open, the keys go to the list.
void ParentCategoryPicker::keyPressEvent(QKeyEvent* event) {
    const int before = currentIndex();
    QComboBox::keyPressEvent(event);
    if (currentIndex() != before) {
        announce(*this, currentText());
    }
}

// As wide as the text, so that a long name is shortened only when the row is too narrow.
QSize ParentCategoryPicker::sizeHint() const {
    constexpr int kFrame = 16;
    constexpr int kArrow = 24;
    return {std::max(metrics::kSmallestPicker, fontMetrics().horizontalAdvance(currentText()) +
                                                   kFrame + grownWithText(kArrow)),
            QComboBox::sizeHint().height()};
}

// The wheel scrolls the list of rows instead of changing the entry, which users do by accident.
void ParentCategoryPicker::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

}  // namespace tavo
