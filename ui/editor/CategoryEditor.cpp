#include "ui/editor/CategoryEditor.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>
#include <utility>

#include "ui/controls/TextLabel.h"
#include "ui/editor/CategoryEditorList.h"
#include "ui/editor/CategoryEditorRow.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

// Paints the background and the outline of the list.
class ListFrame final : public QWidget {
public:
    ListFrame(QWidget& list, QWidget* parent) : QWidget(parent) {
        auto* const layout = new QVBoxLayout(this);
        layout->setContentsMargins(1, 1, 1, 1);
        layout->addWidget(&list);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Appearance appearance(palette());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(appearance.separator, 1));
        painter.setBrush(appearance.list);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRowListRadius,
                                kRowListRadius);
    }
};

QPushButton* makeButton(QStringView text, QWidget* parent) {
    auto* const button = new QPushButton(text.toString(), parent);
    useInterfaceFont(*button, kBody);
    button->setAutoDefault(false);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

}  // namespace

CategoryEditor::CategoryEditor(std::vector<LauncherCategory> initial, StringDictionary rules,
                               TextRules text, SaveAction onSave, QWidget* parent)
    : Sheet(texts::kEditCategories.toString(), parent),
      categories_(std::move(initial)),
      rules_(std::move(rules)),
      text_(std::move(text)),
      onSave_(std::move(onSave)) {
    auto* const title =
        new TextLabel(interfaceFont(kTitle2, QFont::Bold), &Appearance::text, &card());
    useInterfaceFont(*title, kTitle2, QFont::Bold);
    title->setText(texts::kEditCategories.toString());
    auto* const explanation =
        new TextLabel(interfaceFont(kCallout), &Appearance::secondaryText, &card());
    useInterfaceFont(*explanation, kCallout);
    explanation->setWordWrap(true);
    explanation->setText(texts::kEditorExplanation.toString());

    rows_ = new CategoryEditorList(
        [this](const std::string& id, QWidget* rowParent) {
            const LauncherCategory category = *find(id);
            auto* const row = new CategoryEditorRow(
                {.name = binding(category),
                 .parent = parentBinding(category),
                 .rule = ruleBinding(category),
                 .parentCandidates = [this, category] { return parentCandidates(category); },
                 .remove = [this, category] { remove(category); }},
                rowParent);
            row->onRenamed = [this] { rows_->refresh(); };
            return row;
        },
        &card());

    auto* const layout = new QVBoxLayout(&card());
    layout->setContentsMargins(kEditorPadding, kEditorPadding, kEditorPadding, kEditorPadding);
    layout->setSpacing(kEditorSpacing);
    layout->addWidget(title);
    layout->addWidget(explanation);
    layout->addWidget(new ListFrame(*rows_, &card()), 1);
    layout->addWidget(makeAddRow());
    layout->addWidget(makeClosingRow());
    showCategories();
}

QWidget* CategoryEditor::makeAddRow() {
    auto* const row = new QWidget(&card());
    newNameField_ = new QLineEdit(row);
    useInterfaceFont(*newNameField_, kBody);
    newNameField_->setPlaceholderText(texts::kNewCategory.toString());
    newNameField_->setAccessibleName(texts::kNewCategory.toString());
    newNameField_->setMaxLength(std::numeric_limits<int>::max());
    addButton_ = makeButton(texts::kAdd, row);
    addButton_->setEnabled(false);
    connect(newNameField_, &QLineEdit::textChanged, this, [this](const QString& now) {
        newName_ = now.toStdString();
        addButton_->setEnabled(!trimmed(newName_).empty());
    });
    connect(addButton_, &QPushButton::clicked, this, [this] { add(); });

    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kTileSpacing);
    layout->addWidget(newNameField_, 1);
    layout->addWidget(addButton_);
    afterRows_ = {newNameField_, addButton_};
    return row;
}

QWidget* CategoryEditor::makeClosingRow() {
    auto* const row = new QWidget(&card());
    QPushButton* const cancel = makeButton(texts::kCancel, row);
    connect(cancel, &QPushButton::clicked, this, [this] { dismiss(); });
    QPushButton* const saveButton = makeButton(texts::kSave, row);
    saveButton->setDefault(true);
    connect(saveButton, &QPushButton::clicked, this, [this] { save(); });

    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kTileSpacing);
    layout->addStretch(1);
    layout->addWidget(cancel);
    layout->addWidget(saveButton);
    afterRows_.push_back(cancel);
    afterRows_.push_back(saveButton);
    return row;
}

QSize CategoryEditor::cardSize(QSize available) const {
    const QSize size =
        QSize(grownWithText(kEditorSide), grownWithText(kEditorSide)).boundedTo(available);
    // The list alone can be scrolled, so it gives way where the window is low or the text large.
    rows_->setMinimumHeight(kSmallestRowList);
    card().layout()->activate();
    const int excess = card().layout()->minimumHeightForWidth(size.width()) - size.height();
    rows_->setMinimumHeight(
        std::clamp(kSmallestRowList - excess, kLowestRowList, kSmallestRowList));
    return size;
}

QWidget& CategoryEditor::firstFocus() const {
    return *newNameField_;
}

LauncherCategory* CategoryEditor::find(const std::string& id) {
    const auto found = positions_.find(id);
    return found == positions_.end() ? nullptr : &categories_[found->second];
}

Binding<std::string> CategoryEditor::binding(const LauncherCategory& category) {
    return {.get =
                [this, id = category.id] {
                    const LauncherCategory* const current = find(id);
                    return current == nullptr ? std::string() : current->name;
                },
            .set =
                [this, id = category.id](std::string name) {
                    if (LauncherCategory* const current = find(id)) {
                        current->name = std::move(name);
                    }
                }};
}

Binding<std::optional<std::string>> CategoryEditor::parentBinding(
    const LauncherCategory& category) {
    return {.get = [this, id = category.id]() -> std::optional<std::string> {
                const LauncherCategory* const current = find(id);
                return current == nullptr ? std::nullopt : current->parentID;
            },
            .set =
                [this, id = category.id](std::optional<std::string> parentID) {
                    if (LauncherCategory* const current = find(id)) {
                        current->parentID = std::move(parentID);
                    }
                }};
}

Binding<std::string> CategoryEditor::ruleBinding(const LauncherCategory& category) {
    return {.get =
                [this, id = category.id] {
                    const auto rule = rules_.find(id);
                    return rule == rules_.end() ? std::string() : rule->second;
                },
            .set = [this, id = category.id](std::string text) { rules_[id] = std::move(text); }};
}

std::span<const LauncherCategory> CategoryEditor::parentCandidates(
    const LauncherCategory& category) const {
    const auto found = positions_.find(category.id);
    return found == positions_.end() ? std::span<const LauncherCategory>()
                                     : std::span(categories_).first(found->second);
}

void CategoryEditor::add() {
    const std::string name(trimmed(newName_));
    if (name.empty() ||
        std::any_of(categories_.begin(), categories_.end(), [&](const auto& category) {
            return text_.equalIgnoringCase(category.name, name);
        })) {
        return;
    }
    categories_.emplace_back(name);
    // The focus may be on the Add button, which is disabled as soon as the field is empty.
    newNameField_->setFocus(Qt::OtherFocusReason);
    newNameField_->clear();
    showCategories();
    rows_->scrollToEnd();
}

void CategoryEditor::remove(const LauncherCategory& category) {
    const int index = rows_->indexOf(window()->focusWidget());
    if (index >= 0) {
        // Moves the focus out of the row before the row is deleted: Qt would pass the focus on to
        // the next row and scroll there.
        newNameField_->setFocus(Qt::OtherFocusReason);
    }
    std::erase_if(categories_, [&](const auto& other) { return other.id == category.id; });
    showCategories();
    if (index < 0) {
        return;
    }
    // Moves the focus to the delete button of the row that took the deleted one's place.
    if (!categories_.empty()) {
        rows_->rowAt(std::min(index, rows_->rowCount() - 1), true)
            .controls()
            .back()
            ->setFocus(Qt::OtherFocusReason);
    }
}

void CategoryEditor::showCategories() {
    std::vector<std::string> ids;
    ids.reserve(categories_.size());
    positions_.clear();
    for (const LauncherCategory& category : categories_) {
        positions_.emplace(category.id, ids.size());
        ids.push_back(category.id);
    }
    rows_->setIds(std::move(ids));
}

void CategoryEditor::save() {
    onSave_(categories_, rules_);
    dismiss();
}

void CategoryEditor::submit() {
    if (newNameField_->hasFocus()) {
        add();
    } else {
        save();
    }
}

// Moves the focus through the rows in order, then through the widgets below them. Makes the rows
// that do not exist yet.
bool CategoryEditor::focusNextPrevChild(bool next) {
    QWidget* const focus = window()->focusWidget();
    const int count = static_cast<int>(CategoryEditorRow::kControls);
    std::vector<QWidget*> after;
    std::copy_if(afterRows_.begin(), afterRows_.end(), std::back_inserter(after),
                 [](const QWidget* widget) { return widget->isEnabled(); });
    const int rowStops = rows_->rowCount() * count;
    const int stops = rowStops + static_cast<int>(after.size());

    const auto below = std::find(after.begin(), after.end(), focus);
    const int row = rows_->indexOf(focus);
    int stop = 0;
    if (row >= 0) {
        const auto controls = rows_->rowAt(row).controls();
        stop = row * count + static_cast<int>(std::find(controls.begin(), controls.end(), focus) -
                                              controls.begin());
    } else if (below != after.end()) {
        stop = rowStops + static_cast<int>(below - after.begin());
    } else {
        newNameField_->setFocus(Qt::OtherFocusReason);
        return true;
    }
    stop = (stop + (next ? 1 : stops - 1)) % stops;
    QWidget* const target =
        stop < rowStops
            ? rows_->rowAt(stop / count, true).controls()[static_cast<std::size_t>(stop % count)]
            : after[static_cast<std::size_t>(stop - rowStops)];
    target->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

}  // namespace tavo
