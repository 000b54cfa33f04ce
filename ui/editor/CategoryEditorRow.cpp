#include "ui/editor/CategoryEditorRow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QVBoxLayout>
#include <limits>
#include <utility>

#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/SymbolButton.h"
#include "ui/editor/ParentCategoryPicker.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

QLineEdit* makeField(QStringView prompt, int fontSize, QWidget* parent) {
    auto* const field = new QLineEdit(parent);
    field->setPlaceholderText(prompt.toString());
    useInterfaceFont(*field, fontSize);
    // Without the default limit of 32,767 characters, which would cut a longer stored text.
    field->setMaxLength(std::numeric_limits<int>::max());
    return field;
}

// Shows the text of the binding; stores what is typed or what an accessibility client puts in.
void bindField(QLineEdit& field, const Binding<std::string>& text,
               const std::function<void()>& changed) {
    QObject::connect(&field, &QLineEdit::textChanged, &field, [text, changed](const QString& now) {
        std::string typed = now.toStdString();
        if (typed != text.get()) {
            text.set(std::move(typed));
            changed();
        }
    });
}

void showText(QLineEdit& field, const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (field.text() != shown) {
        field.setText(shown);
        field.setCursorPosition(0);
    }
}

}  // namespace

CategoryEditorRow::CategoryEditorRow(Values values, QWidget* parent)
    : QWidget(parent),
      values_(std::move(values)),
      name_(makeField(texts::kCategoryName, kBody, this)),
      position_(new ParentCategoryPicker(values_.parent, values_.parentCandidates, this)),
      rule_(makeField(texts::kKeywords, kCaption, this)),
      remove_(new SymbolButton(u"trash", {}, texts::kDeleteCategory.toString(), this)) {
    setAccessibleRole(*this, QAccessible::ListItem);
    remove_->setTone(SymbolButton::Tone::Destructive);
    showText(*name_, values_.name.get());
    showText(*rule_, values_.rule.get());
    bindField(*name_, values_.name, [this] {
        nameControls();
        onRenamed();
    });
    bindField(*rule_, values_.rule, [] {});
    connect(remove_, &QAbstractButton::clicked, this, [this] { values_.remove(); });

    auto* const fields = new QVBoxLayout;
    fields->setSpacing(kEditorFieldSpacing);
    fields->addWidget(name_);
    fields->addWidget(position_, 0, Qt::AlignLeft);
    fields->addWidget(rule_);
    auto* const layout = new QHBoxLayout(this);
    constexpr int kMargin = SymbolButton::kMargin;
    layout->setContentsMargins(kEditorRowSpacing, kEditorRowSpacing - 1,
                               kEditorRowSpacing - kMargin, kEditorRowSpacing - 1);
    layout->setSpacing(kEditorRowSpacing - kMargin);
    layout->addLayout(fields, 1);
    layout->addWidget(remove_, 0, Qt::AlignVCenter);
    nameControls();
    applyAppearance();
}

void CategoryEditorRow::refresh() {
    showText(*name_, values_.name.get());
    showText(*rule_, values_.rule.get());
    position_->refresh();
    nameControls();
}

std::array<QWidget*, 4> CategoryEditorRow::controls() const {
    return {name_, position_, rule_, remove_};
}

// The accessible name of each field includes the name of the category.
void CategoryEditorRow::nameControls() {
    constexpr qsizetype kLongest = 100;
    const QString category = displayText(values_.name.get(), kLongest);
    const auto named = [&](QStringView title) {
        return category.isEmpty() ? title.toString()
                                  : title.toString() + QStringLiteral(": ") + category;
    };
    setAccessibleName(category);
    name_->setAccessibleName(named(texts::kCategoryName));
    position_->setAccessibleName(named(texts::kPosition));
    rule_->setAccessibleName(named(texts::kKeywords));
    remove_->setAccessibleName(named(texts::kDeleteCategory));
}

void CategoryEditorRow::applyAppearance() {
    const Appearance appearance(palette());
    QPalette quiet = palette();
    quiet.setColor(QPalette::Text, appearance.secondaryText);
    rule_->setPalette(quiet);
}

void CategoryEditorRow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyAppearance();
    }
}

}  // namespace tavo
