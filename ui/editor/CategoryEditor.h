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

// Renames, nests, adds and deletes categories and edits their keywords on a copy of its own, and
// hands the whole copy back when the user saves; dismissed any other way it changes nothing. What
// is typed is taken as it is: whoever is handed the copy repairs it. Main thread.
class CategoryEditor final : public Sheet {
public:
    using SaveAction = std::function<void(const std::vector<LauncherCategory>& categories,
                                          const StringDictionary& rules)>;

    // `initial` in the order to show, ids unique; `rules` by category id. `onSave` is called at
    // most once, before dismiss.
    CategoryEditor(std::vector<LauncherCategory> initial, StringDictionary rules, TextRules text,
                   SaveAction onSave, QWidget* parent);

protected:
    [[nodiscard]] QSize cardSize(QSize available) const override;
    [[nodiscard]] QWidget& firstFocus() const override;
    void submit() override;
    bool focusNextPrevChild(bool next) override;

private:
    // The bindings look their category up by id on every use, so they stay right while rows come
    // and go; once it is gone they read as empty and change nothing (a keyword text is kept).
    [[nodiscard]] Binding<std::string> binding(const LauncherCategory& category);
    [[nodiscard]] Binding<std::optional<std::string>> parentBinding(
        const LauncherCategory& category);
    [[nodiscard]] Binding<std::string> ruleBinding(const LauncherCategory& category);

    // The categories that `category` may be placed under: those above it.
    [[nodiscard]] std::span<const LauncherCategory> parentCandidates(
        const LauncherCategory& category) const;

    // The category of that id in the copy; null when it is gone.
    [[nodiscard]] LauncherCategory* find(const std::string& id);

    void add();
    void remove(const LauncherCategory& category);
    void save();
    void showCategories();

    QWidget* makeAddRow();
    QWidget* makeClosingRow();

    std::vector<LauncherCategory> categories_;
    std::unordered_map<std::string, std::size_t> positions_;  // of the categories, by id
    std::string newName_;
    StringDictionary rules_;
    TextRules text_;
    SaveAction onSave_;

    CategoryEditorList* rows_ = nullptr;
    QLineEdit* newNameField_ = nullptr;
    QPushButton* addButton_ = nullptr;
    std::vector<QWidget*> afterRows_;  // what Tab reaches after the rows, in order
};

}  // namespace tavo
