#include "ui/accessibility/AccessibleItems.h"

#include <QAccessibleWidget>
#include <QMenu>
#include <QWidget>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ui/accessibility/AccessibleMenu.h"
#include "ui/accessibility/AccessibleWindow.h"
#include "ui/accessibility/Announcer.h"

namespace tavo {
namespace {

constexpr char kRoleProperty[] = "tavoAccessibleRole";

class Item;

// The role given by setAccessibleRole(), else `standard`.
QAccessible::Role roleOf(const QWidget& widget, QAccessible::Role standard) {
    const QVariant role = widget.property(kRoleProperty);
    return role.isValid() ? static_cast<QAccessible::Role>(role.toInt()) : standard;
}

void announce(QAccessible::Event kind, QAccessibleInterface& interface) {
    if (QAccessible::isActive()) {
        QAccessibleEvent event(&interface, kind);
        QAccessible::updateAccessibility(&event);
    }
}

// Base class of items and their buttons, which are no QObjects and have a rectangle in the list.
class Part : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    explicit Part(AccessibleList& list) : list_(list) {}

    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

protected:
    // In the widget's coordinates.
    [[nodiscard]] virtual QRect place() const = 0;
    [[nodiscard]] AccessibleItems* items() const;
    [[nodiscard]] AccessibleList& list() const { return list_; }
    [[nodiscard]] bool acts() const;

private:
    AccessibleList& list_;
};

// The button in an item. The item's destructor deletes it.
class ItemButton final : public Part {
public:
    ItemButton(AccessibleList& list, Item& item) : Part(list), item_(item) {}
    ~ItemButton() override;

    bool isValid() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QString text(QAccessible::Text kind) const override {
        const auto button = shown();
        return kind == QAccessible::Name && button ? button->name : QString();
    }
    QAccessible::Role role() const override { return QAccessible::Button; }
    QAccessible::State state() const override {
        QAccessible::State state = Part::state();
        state.invisible = state.invisible || !shown();
        return state;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override;

    QString toldName;

private:
    [[nodiscard]] std::optional<AccessibleItems::Button> shown() const;
    QRect place() const override {
        const auto button = shown();
        return button ? button->rect : QRect();
    }

    Item& item_;
};

// One item of a list. Stays with its key when the position of that key changes.
class Item final : public Part
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    ,
                   public QAccessibleAttributesInterface
#endif
{
public:
    Item(AccessibleList& list, int index);
    ~Item() override;

#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    // The position in the list. Qt before 6.8 has no attributes; clients count the children there.
    QList<QAccessible::Attribute> attributeKeys() const override {
        return {QAccessible::Attribute::Custom};
    }
    QVariant attributeValue(QAccessible::Attribute asked) const override;
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::AttributesInterface
                   ? static_cast<QAccessibleAttributesInterface*>(this)
                   : Part::interface_cast(type);
    }
#endif

    // Also true while clients are told that the item is gone: Qt tells them nothing about invalid
    // objects.
    bool isValid() const override {
        return ends || inList();
    }
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    int childCount() const override {
        return shownButton() ? 1 : 0;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child != nullptr && child == button_ ? 0 : -1;
    }
    QString text(QAccessible::Text kind) const override;
    QAccessible::Role role() const override {
        return QAccessible::ListItem;
    }
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

    [[nodiscard]] std::optional<AccessibleItems::Button> shownButton() const {
        return inList() ? items()->itemButton(index) : std::nullopt;
    }
    // Announces what has changed of name, description and button since they were last announced.
    void tellDetails();
    void buttonEnds() {
        button_ = nullptr;
    }

    int index;
    const std::string key;
    bool ends = false;  // set when the item is no longer in the list

private:
    [[nodiscard]] bool inList() const;
    QRect place() const override {
        return inList() ? items()->itemRect(index) : QRect();
    }
    ItemButton& knownButton() const;
    void dropButton();

    mutable ItemButton* button_ = nullptr;  // null until a client asks for it; owned by Qt's cache
    bool toldButton_;
    QString toldName_;
    QString toldDescription_;
};

}  // namespace

// The list itself. Qt's cache owns the interfaces of the items, as it owns that of the list. The
// list deletes them when their items are gone, and before it is deleted itself.
class AccessibleList final : public QAccessibleWidget {
public:
    AccessibleList(QWidget& widget, AccessibleItems& items)
        : QAccessibleWidget(&widget, roleOf(widget, QAccessible::List)), items_(&items) {
        items.accessible_ = this;
    }

    // A value that is a text is the description too: Qt's bridge to AT-SPI tells of no other.
    QString text(QAccessible::Text kind) const override {
        const QString value = items_ != nullptr ? items_->itemsValue() : QString();
        const bool asked = kind == QAccessible::Value || kind == QAccessible::Description;
        return asked && !value.isEmpty() ? value : QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        if (items_ != nullptr && items_->itemsExpanded()) {
            const bool expanded = *items_->itemsExpanded();
            state.expandable = true;
            state.expanded = expanded;
            state.collapsed = !expanded;
            state.hasPopup = true;
        }
        return state;
    }

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (items_ != nullptr && items_->itemsExpanded()) {
            names.prepend(showMenuAction());
        }
        return names;
    }

    void doAction(const QString& name) override {
        if (name != showMenuAction()) {
            QAccessibleWidget::doAction(name);
        } else if (items_ != nullptr && items_->itemsExpanded() && widget()->isEnabled()) {
            items_->expandItems();
        }
    }

    ~AccessibleList() override {
        if (items_ != nullptr) {
            items_->accessible_ = nullptr;
        }
        forgetItems();
    }

    // To be called when the widget is destroyed, which happens before Qt deletes this interface.
    void widgetEnds() {
        forgetItems();
        items_ = nullptr;
    }

    bool isValid() const override { return items_ != nullptr && QAccessibleWidget::isValid(); }
    int childCount() const override { return items_ == nullptr ? 0 : items_->itemCount(); }

    QAccessibleInterface* child(int index) const override {
        return index < 0 || index >= childCount() ? nullptr
                                                  : &const_cast<AccessibleList*>(this)->item(index);
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* const item = dynamic_cast<const Item*>(child);
        return item == nullptr ? -1 : item->index;
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        const QPoint point = widget()->mapFromGlobal(QPoint(x, y));
        for (int index = 0; index < childCount(); ++index) {
            if (items_->itemRect(index).contains(point)) {
                return child(index);
            }
        }
        return nullptr;
    }

    QAccessibleInterface* focusChild() const override {
        for (int index = 0; index < childCount(); ++index) {
            if (items_->itemHasFocus(index)) {
                return child(index);
            }
        }
        return nullptr;
    }

    Item& item(int index) {
        const auto position = static_cast<std::size_t>(index);
        if (known_.size() <= position) {
            known_.resize(static_cast<std::size_t>(items_->itemCount()), nullptr);
        }
        if (known_[position] == nullptr) {
            known_[position] = new Item(*this, index);
            QAccessible::registerAccessibleInterface(known_[position]);
        }
        return *known_[position];
    }

    void itemEnds(const Item& item) {
        const auto position = static_cast<std::size_t>(item.index);
        if (position < known_.size() && known_[position] == &item) {
            known_[position] = nullptr;
        }
    }

    // Called after items were added, removed or moved: moves each known item to the position where
    // its key is now, and ends the items whose keys are gone.
    void itemsChanged() {
        std::unordered_multimap<std::string, Item*> gone;
        for (auto item = known_.rbegin(); item != known_.rend(); ++item) {
            if (*item != nullptr) {
                gone.emplace((*item)->key, *item);
            }
        }
        const auto count = static_cast<std::size_t>(items_->itemCount());
        known_.assign(count, nullptr);
        std::vector<int> unknown;
        for (std::size_t i = 0; i < count && !(gone.empty() && unknown.size() == kMostNews); ++i) {
            const int index = static_cast<int>(i);
            const auto found = gone.find(items_->itemKey(index));
            if (found != gone.end()) {
                found->second->index = index;
                known_[i] = found->second;
                gone.erase(found);
            } else if (unknown.size() < kMostNews) {
                unknown.push_back(index);
            }
        }
        tellChildren(gone, unknown);
    }

    void tellDetails() {
        for (int index = 0; index < static_cast<int>(known_.size()); ++index) {
            tellDetails(index);
        }
    }
    void tellDetails(int index) {
        const auto position = static_cast<std::size_t>(index);
        // Clients are told about items that they asked for, not about others.
        if (position < known_.size() && known_[position] != nullptr) {
            known_[position]->tellDetails();
        }
    }

    static void end(QAccessibleInterface& interface) {
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(&interface));
    }

    [[nodiscard]] AccessibleItems* items() const { return items_; }
    [[nodiscard]] QWidget& listWidget() const { return *widget(); }

private:
    // How many new items are announced at most: no screen reader reads out thousands, and each
    // takes time. They are announced one by one, because the event that Qt makes of a reordered
    // list is malformed.
    static constexpr std::size_t kMostNews = 32;

    void tellChildren(const std::unordered_multimap<std::string, Item*>& gone,
                      const std::vector<int>& unknown) {
        std::size_t told = 0;
        for (const auto& [key, item] : gone) {
            item->ends = true;
            if (told++ < kMostNews) {
                announce(QAccessible::ObjectDestroyed, *item);
            }
            end(*item);
        }
        if (QAccessible::isActive()) {
            for (const int index : unknown) {
                announce(QAccessible::ObjectCreated, item(index));
            }
        }
    }

    void forgetItems() {
        std::vector<Item*> ending;
        ending.swap(known_);
        for (Item* const item : ending) {
            if (item != nullptr) {
                end(*item);
            }
        }
    }

    AccessibleItems* items_;    // null once the widget is destroyed
    std::vector<Item*> known_;  // by position; null for those that no client asked for
};

namespace {

AccessibleItems* Part::items() const {
    return list_.items();
}

QWindow* Part::window() const {
    return list_.window();
}

bool Part::acts() const {
    return isValid() && list_.items() != nullptr && list_.listWidget().isEnabled();
}

QRect Part::rect() const {
    const QRect inWidget = place();
    return inWidget.isNull()
               ? inWidget
               : QRect(list_.listWidget().mapToGlobal(inWidget.topLeft()), inWidget.size());
}

QAccessible::State Part::state() const {
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    const QWidget& widget = list_.listWidget();
    state.invisible = !widget.isVisible();
    state.offscreen = !widget.rect().intersects(place());
    state.disabled = !widget.isEnabled();
    return state;
}

// Item and button clear the pointers to each other, because Qt's cache deletes them in any order at
// the end of the program.
ItemButton::~ItemButton() {
    item_.buttonEnds();
}

bool ItemButton::isValid() const {
    return item_.isValid();
}

std::optional<AccessibleItems::Button> ItemButton::shown() const {
    return item_.shownButton();
}

QAccessibleInterface* ItemButton::parent() const {
    return &item_;
}

void ItemButton::doAction(const QString& name) {
    if (name == pressAction() && acts()) {
        items()->pressItemButton(item_.index);
    }
}

Item::Item(AccessibleList& list, int position)
    : Part(list),
      index(position),
      key(items()->itemKey(position)),
      toldButton_(items()->itemButton(position).has_value()),
      toldName_(items()->itemName(position)),
      toldDescription_(items()->itemDescription(position)) {}

Item::~Item() {
    dropButton();
    list().itemEnds(*this);
}

bool Item::inList() const {
    return !ends && items() != nullptr && index < items()->itemCount();
}

QAccessibleInterface* Item::parent() const {
    return &list();
}

QAccessibleInterface* Item::child(int position) const {
    return position == 0 && shownButton() ? &knownButton() : nullptr;
}

ItemButton& Item::knownButton() const {
    if (button_ == nullptr) {
        button_ = new ItemButton(list(), const_cast<Item&>(*this));
        button_->toldName = button_->text(QAccessible::Name);
        QAccessible::registerAccessibleInterface(button_);
    }
    return *button_;
}

void Item::dropButton() {
    if (button_ != nullptr) {
        AccessibleList::end(*std::exchange(button_, nullptr));
    }
}

QString Item::text(QAccessible::Text kind) const {
    if (!inList()) {
        return {};
    }
    switch (kind) {
        case QAccessible::Name:
            return items()->itemName(index);
        case QAccessible::Description:
            return items()->itemDescription(index);
        default:
            return {};
    }
}

QAccessible::State Item::state() const {
    QAccessible::State state = Part::state();
    if (inList()) {
        state.selectable = true;
        state.selected = items()->itemIsSelected(index);
        state.focusable = true;
        state.focused = items()->itemHasFocus(index);
    }
    return state;
}

QStringList Item::actionNames() const {
    QStringList names{pressAction(), setFocusAction()};
    if (inList() && items()->itemsHaveMenus()) {
        names << showMenuAction();
    }
    return names;
}

void Item::doAction(const QString& name) {
    if (!acts()) {
        return;
    }
    if (name == pressAction()) {
        items()->pressItem(index);
    } else if (name == setFocusAction()) {
        items()->focusItem(index);
    } else if (name == showMenuAction() && items()->itemsHaveMenus()) {
        items()->showItemMenu(index);
    }
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
QVariant Item::attributeValue(QAccessible::Attribute asked) const {
    if (asked != QAccessible::Attribute::Custom || !inList()) {
        return {};
    }
    return QVariant::fromValue(QHash<QString, QString>{
        {QStringLiteral("posinset"), QString::number(index + 1)},
        {QStringLiteral("setsize"), QString::number(items()->itemCount())}});
}
#endif

void Item::tellDetails() {
    const auto tell = [this](QString& told, const QString& now, QAccessible::Event kind) {
        if (told != now) {
            told = now;
            announce(kind, *this);
        }
    };
    tell(toldName_, items()->itemName(index), QAccessible::NameChanged);
    tell(toldDescription_, items()->itemDescription(index), QAccessible::DescriptionChanged);

    const auto shown = shownButton();
    if (!shown) {
        if (button_ != nullptr) {
            announce(QAccessible::ObjectDestroyed, *button_);
            dropButton();
        }
    } else if (!toldButton_) {
        announce(QAccessible::ObjectCreated, knownButton());
    } else if (button_ != nullptr && button_->toldName != shown->name) {
        button_->toldName = shown->name;
        announce(QAccessible::NameChanged, *button_);
    }
    toldButton_ = shown.has_value();
}

// A dialog inside the window, which takes all input while it is there.
class ModalDialog final : public QAccessibleWidget {
public:
    explicit ModalDialog(QWidget& widget) : QAccessibleWidget(&widget, QAccessible::Dialog) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = true;
        return state;
    }
};

// Whether a menu is a child of a window with the role Window, or of a menu that is.
bool isInWindow(const QMenu& menu) {
    const QWidget* above = menu.parentWidget();
    while (qobject_cast<const QMenu*>(above) != nullptr) {
        above = above->parentWidget();
    }
    return above != nullptr && roleOf(*above, QAccessible::NoRole) == QAccessible::Window;
}

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr) {
        return nullptr;
    }
    if (auto* const items = dynamic_cast<AccessibleItems*>(object)) {
        return new AccessibleList(*widget, *items);
    }
    if (auto* const menu = qobject_cast<QMenu*>(widget)) {
        return isInWindow(*menu) ? makeAccessibleMenu(*menu) : nullptr;
    }
    const QAccessible::Role role = roleOf(*widget, QAccessible::NoRole);
    switch (role) {
        case QAccessible::NoRole:
            return nullptr;
        case QAccessible::Window:
            return makeAccessibleWindow(*widget, role);
        case QAccessible::Dialog:
            return new ModalDialog(*widget);
        case QAccessible::StatusBar:
            return makeAccessibleStatusBar(*widget);
        default:
            return new QAccessibleWidget(widget, role);
    }
}

void announceChild(QAccessible::Event kind, QWidget& widget, int index) {
    if (QAccessible::isActive()) {
        QAccessibleEvent event(&widget, kind);
        event.setChild(index);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace

AccessibleItems::~AccessibleItems() {
    if (accessible_ != nullptr) {
        accessible_->widgetEnds();
    }
}

void installAccessibleItems() {
    QAccessible::installFactory(makeInterface);
}

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    widget.setProperty(kRoleProperty, static_cast<int>(role));
}

QAccessible::Role givenAccessibleRole(const QWidget& widget) {
    return roleOf(widget, QAccessible::NoRole);
}

void announceItems(QWidget& widget) {
    AccessibleList* const list = dynamic_cast<AccessibleItems&>(widget).accessible_;
    // Without this list in Qt's cache no client has asked for an item, so that there is nothing to
    // announce.
    if (list != nullptr) {
        list->itemsChanged();
        list->tellDetails();
    }
}

void announceItemDetails(QWidget& widget) {
    if (AccessibleList* const list = dynamic_cast<AccessibleItems&>(widget).accessible_) {
        list->tellDetails();
    }
}

void announceItemDetails(QWidget& widget, int index) {
    if (AccessibleList* const list = dynamic_cast<AccessibleItems&>(widget).accessible_) {
        list->tellDetails(index);
    }
}

void announceItemsExpanded(QWidget& widget) {
    if (QAccessible::isActive()) {
        QAccessible::State changed;
        changed.expanded = true;
        QAccessibleStateChangeEvent event(&widget, changed);
        QAccessible::updateAccessibility(&event);
    }
}

void announceFocus(QWidget& widget, int index) {
    announceChild(QAccessible::Focus, widget, index);
}

void announceSelection(QWidget& widget, int index) {
    announceChild(QAccessible::Selection, widget, index);
}

}  // namespace tavo
