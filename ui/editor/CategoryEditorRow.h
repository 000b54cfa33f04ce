// One category in the editor.
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

// Name, position, keywords and the button that deletes. Shows what its bindings read and keeps
// nothing. Main thread.
class CategoryEditorRow final : public QWidget {
public:
    struct Values {
        Binding<std::string> name;
        Binding<std::optional<std::string>> parent;
        Binding<std::string> rule;
        // What it may be placed under, as of now.
        std::function<std::span<const LauncherCategory>()> parentCandidates;
        std::function<void()> remove;
    };

    CategoryEditorRow(Values values, QWidget* parent);

    // Reads everything again.
    void refresh();

    // Its fields and buttons in the order of Tab.
    static constexpr std::size_t kControls = 4;
    [[nodiscard]] std::array<QWidget*, kControls> controls() const;

    // Called when the user changed the name: other rows may show it.
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
