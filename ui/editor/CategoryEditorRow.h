// The row of one category in the editor.
#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "catalogue/LauncherCategory.h"
#include "ui/editor/Binding.h"

class QLineEdit;

namespace tavo {

class ParentCategoryPicker;
class SymbolButton;

// Fields for name, parent and keywords, and the delete button. Shows what its bindings read and
// stores nothing itself. Main thread.
class CategoryEditorRow final : public QWidget {
public:
    struct Values {
        Binding<std::string> name;
        Binding<std::optional<std::string>> parent;
        Binding<std::string> rule;
        // Returns the categories that may be the parent at this moment.
        std::function<std::span<const LauncherCategory>()> parentCandidates;
        std::function<void()> remove;
    };

    CategoryEditorRow(Values values, QWidget* parent);

    // Reads all values again.
    void refresh();

    // The fields and the button, in tab order.
    static constexpr std::size_t kControls = 4;
    [[nodiscard]] std::array<QWidget*, kControls> controls() const;

    // Called when the user has changed the name, which other rows may show as a parent.
    std::function<void()> onRenamed = [] {};

protected:
    void changeEvent(QEvent* event) override;

private:
    void nameControls();
    void applyAppearance();

    Values values_;
    QLineEdit* name_;
    ParentCategoryPicker* position_;
    QLineEdit* rule_;
    SymbolButton* remove_;
};

}  // namespace tavo
