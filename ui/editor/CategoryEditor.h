// The sheet in which the user edits the categories.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "catalogue/LauncherCategory.h"
#include "platform/DefaultsStore.h"
#include "support/Text.h"
#include "ui/controls/Sheet.h"
#include "ui/editor/Binding.h"

class QLineEdit;
class QPushButton;

namespace tavo {

class CategoryEditorList;

// Renames, nests, adds and deletes categories and edits their keywords in a copy, which it passes
// to `onSave` when the user saves. Closed in any other way, it changes nothing. It does not
// validate what is typed; the receiver of the copy does. Main thread.
class CategoryEditor final : public Sheet {
public:
    using SaveAction = std::function<void(const std::vector<LauncherCategory>& categories,
                                          const StringDictionary& rules)>;

    // `initial` in the order to show, with unique ids. `rules` are the keywords by category id.
    // `onSave` is called at most once, before `dismiss`.
    CategoryEditor(std::vector<LauncherCategory> initial, StringDictionary rules, TextRules text,
                   SaveAction onSave, QWidget* parent);

protected:
    [[nodiscard]] QSize cardSize(QSize available) const override;
    [[nodiscard]] QWidget& firstFocus() const override;
    void submit() override;
    bool focusNextPrevChild(bool next) override;

private:
    // Bindings for a row. They look the category up by its id each time, so that they stay valid
    // when categories are added or deleted. The name and the parent of a deleted category read as
    // empty and are not stored; its keywords still are.
    [[nodiscard]] Binding<std::string> binding(const LauncherCategory& category);
    [[nodiscard]] Binding<std::optional<std::string>> parentBinding(
        const LauncherCategory& category);
    [[nodiscard]] Binding<std::string> ruleBinding(const LauncherCategory& category);

    // The categories that may be the parent of `category`: those before it in the list.
    [[nodiscard]] std::span<const LauncherCategory> parentCandidates(
        const LauncherCategory& category) const;

    // The category of that id in the copy; null when it was deleted.
    [[nodiscard]] LauncherCategory* find(const std::string& id);

    void add();
    void remove(const LauncherCategory& category);
    void save();
    void showCategories();

    QWidget* makeAddRow();
    QWidget* makeClosingRow();

    std::vector<LauncherCategory> categories_;
    std::unordered_map<std::string, std::size_t> positions_;  // in `categories_`, by category id
    std::string newName_;
    StringDictionary rules_;
    TextRules text_;
    SaveAction onSave_;

    CategoryEditorList* rows_ = nullptr;
    QLineEdit* newNameField_ = nullptr;
    QPushButton* addButton_ = nullptr;
    std::vector<QWidget*> afterRows_;  // the widgets after the rows in tab order
};

}  // namespace tavo
