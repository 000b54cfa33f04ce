#include "ui/window/LauncherView.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "catalogue/CategoryTree.h"
#include "support/FatalError.h"
#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/PopupMenu.h"
#include "ui/controls/SearchField.h"
#include "ui/controls/SymbolButton.h"
#include "ui/controls/TextLabel.h"
#include "ui/editor/CategoryEditor.h"
#include "ui/grid/AppTile.h"
#include "ui/grid/TileGrid.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Resources.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"
#include "ui/look/WindowShape.h"
#include "ui/sidebar/SidebarList.h"
#include "ui/window/AlertSheet.h"
#include "ui/window/SpokenResults.h"

namespace tavo {
namespace {

using namespace metrics;

// The program's logo, scaled from a large picture for the device pixel ratio.
class Logo final : public QWidget {
public:
    explicit Logo(QWidget* parent)
        : QWidget(parent), image_(pngResource(QStringLiteral("TavoLauncherMark.png"))) {
        setFixedSize(kLogoSide, kLogoSide);
        if (image_.isNull()) {
            fatalError("Unexpectedly found nil while unwrapping an Optional value");
        }
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const qreal scale = devicePixelRatioF();
        if (shown_.devicePixelRatio() != scale || shown_.isNull()) {
            shown_ = image_.scaled(size() * scale, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            shown_.setDevicePixelRatio(scale);
        }
        QPainter(this).drawImage(0, 0, shown_);
    }

private:
    QImage image_;
    QImage shown_;
};

// The font of the title: as large as metrics::kTitle2, or smaller where the interface font is too
// wide to fit beside the logo.
QFont titleFont(const QString& title) {
    const int space = sidebarWidth() - 2 * kSidebarPadding - kLogoSide - kSidebarSpacing;
    int size = kTitle2;
    QFont font = interfaceFont(size, QFont::Bold);
    while (size > kCaption && QFontMetrics(font).horizontalAdvance(title) > space) {
        font = interfaceFont(--size, QFont::Bold);
    }
    return font;
}

std::string toUtf8(const QString& text) {
    return text.toStdString();
}

}  // namespace

LauncherView::LauncherView(const World& world, QWidget* parent)
    : QWidget(parent),
      text_(world.text),
      model_(world.platform, world.text),
      icons_(world.icons, world.mainQueue) {
    setAttribute(Qt::WA_TranslucentBackground);
    QWidget* const sidebar = makeSidebar();
    QWidget* const toolbar = makeToolbar();
    grid_ = new TileGrid(
        icons_, [this](const AppItem& app) { return makeTile(app); }, this);
    grid_->isFavorite = [this](const AppItem& app) { return favorites_.contains(app.url.path); };
    grid_->onLeaveUp = [this] { search_->take(false); };
    footer_ = makeFooter();
    spoken_ = std::make_unique<SpokenResults>(model_, *footer_);

    auto* const column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(toolbar);
    column->addWidget(grid_, 1);
    column->addWidget(footer_);
    auto* const whole = new QHBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addWidget(sidebar);
    whole->addLayout(column, 1);

    // Input methods (a dead key is the most common one) send InputMethod events to the widget with
    // the focus. The event filter passes them on to the search field.
    for (QWidget* const widget : findChildren<QWidget*>()) {
        if (widget->focusPolicy() != Qt::NoFocus && widget != search_->line() &&
            widget != search_) {
            widget->setAttribute(Qt::WA_InputMethodEnabled);
            widget->installEventFilter(this);
        }
    }

    search_->take(false);
    modelChanges_ = model_.objectWillChange.subscribe([this] { refreshSoon(); });
    refresh();
}

LauncherView::~LauncherView() = default;

QWidget* LauncherView::makeSidebar() {
    auto* const sidebar = new QWidget(this);
    sidebar_ = sidebar;
    sidebar->setFixedWidth(sidebarWidth());
    // The margins of the edit button are part of the space around it.
    constexpr int kMargin = SymbolButton::kMargin;

    closeButton_ = new SymbolButton(u"xmark", {}, texts::kClose.toString(), sidebar);
    closeButton_->setSymbolSize(kCloseSide);
    closeButton_->setTone(SymbolButton::Tone::Secondary);
    // The button is in the space above the logo. The cross in it, not the button, is aligned with
    // the logo's left edge.
    closeButton_->setGeometry(kSidebarPadding - (kCloseButtonSide - kCloseCross) / 2, 0,
                              kCloseButtonSide, kCloseButtonSide);
    connect(closeButton_, &QAbstractButton::clicked, this, [this] { onClose(); });

    const QString name = texts::kProgramName.toString();
    title_ = new TextLabel(titleFont(name), &Appearance::text, sidebar);
    title_->setText(name);
    auto* const header = new QHBoxLayout;
    header->setContentsMargins(kMargin, 0, kSidebarPadding, kHeaderBottom);
    header->setSpacing(kSidebarSpacing);
    auto* const logo = new Logo(sidebar);
    header->addWidget(logo);
    header->addWidget(title_, 1);

    logo->lower();  // below the close button, the last two rows of whose margin are over it
    closeButton_->setToolTipBeside(*logo);

    categories_ = new SidebarList(sidebar);
    categories_->onSelect = [this](const std::string& id) { model_.setSelectedCategoryID(id); };

    auto* const rows = new QHBoxLayout;
    rows->setContentsMargins(kMargin, 0, 0, 0);
    rows->addWidget(categories_);
    auto* const editButton = new QHBoxLayout;
    editButton->setContentsMargins(0, kEditButtonTop - kMargin, kSidebarPadding - kMargin, 0);
    editButton->addWidget(makeEditButton(sidebar));

    auto* const layout = new QVBoxLayout(sidebar);
    layout->setContentsMargins(kSidebarPadding - kMargin, kSidebarPadding, 0,
                               kSidebarPadding - kMargin);
    layout->setSpacing(kSidebarSpacing);
    layout->addLayout(header);
    layout->addLayout(rows);
    layout->addStretch(1);
    layout->addLayout(editButton);
    return sidebar;
}

QWidget* LauncherView::makeEditButton(QWidget* sidebar) {
    auto* const button =
        new SymbolButton(u"slider.horizontal.3", texts::kEditCategories.toString(), {}, sidebar);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(button, &QAbstractButton::clicked, this, [this] {
        showingCategoryEditor_ = true;
        refreshSheets();
    });
    return button;
}

void LauncherView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        sidebar_->setFixedWidth(sidebarWidth());
        title_->setFont(titleFont(title_->text()));
    }
}

QWidget* LauncherView::makeToolbar() {
    auto* const toolbar = new QWidget(this);
    search_ = new SearchField(toolbar);
    search_->onEdited = [this](const QString& text) { model_.setQuery(toUtf8(text)); };
    search_->onSubmit = [this] {
        const std::vector<AppItem> shown = model_.filtered();
        if (!shown.empty()) {
            model_.open(shown.front());
        }
    };

    suggestions_ = new SymbolButton(u"text.magnifyingglass", {},
                                    texts::kSearchSuggestions.toString(), toolbar);
    connect(suggestions_, &QAbstractButton::clicked, this, [this] { showSuggestions(); });
    auto* const reloadButton =
        new SymbolButton(u"arrow.clockwise", {}, texts::kReload.toString(), toolbar);
    connect(reloadButton, &QAbstractButton::clicked, this, [this] { reload(); });

    auto* const layout = new QHBoxLayout(toolbar);
    // The margins of the buttons are part of the space around them.
    constexpr int kMargin = SymbolButton::kMargin;
    layout->setContentsMargins(kBarHorizontal, kToolbarVertical, kBarHorizontal - kMargin,
                               kToolbarVertical);
    layout->setSpacing(0);
    layout->addWidget(search_, 1);
    layout->addSpacing(kToolbarSpacing - kMargin);
    layout->addWidget(suggestions_);
    // A flexible space between two spacings: wider than 0 when the search field is at its widest.
    layout->addSpacing(2 * (kToolbarSpacing - kMargin));
    layout->addStretch(0);
    layout->addWidget(reloadButton);
    return toolbar;
}

QWidget* LauncherView::makeFooter() {
    auto* const footer = new QWidget(this);
    setAccessibleRole(*footer, QAccessible::StatusBar);
    count_ = new TextLabel(interfaceFont(kCaption), &Appearance::secondaryText, footer);
    useInterfaceFont(*count_, kCaption);
    auto* const credit = new SymbolButton({}, texts::kCredit.toString(), {}, footer);
    credit->setFontSize(kCaption);
    credit->setTone(SymbolButton::Tone::Secondary);
    credit->setCursor(Qt::PointingHandCursor);
    connect(credit, &QAbstractButton::clicked, this,
            [this] { onLink(toUtf8(texts::kCreditAddress.toString())); });

    auto* const layout = new QHBoxLayout(footer);
    constexpr int kMargin = SymbolButton::kMargin;
    layout->setContentsMargins(kBarHorizontal, kFooterVertical - kMargin, kBarHorizontal - kMargin,
                               kFooterVertical - kMargin);
    // Stretched, so that a longer count is shown whole before the next layout.
    layout->addWidget(count_, 1);
    layout->addWidget(credit);
    return footer;
}

AppTile LauncherView::makeTile(const AppItem& app) {
    std::set<std::string> assigned;
    for (const LauncherCategory& category : model_.customCategories()) {
        if (model_.isAssigned(app, category)) {
            assigned.insert(category.id);
        }
    }
    return {
        .app = app,
        .favorite = favorites_.contains(app.url.path),
        .hidden = model_.isHidden(app),
        .categories = model_.customCategories(),
        .assignedCategoryIDs = std::move(assigned),
        .launch = [this, app] { model_.open(app); },
        .toggleFavorite =
            [this, app] {
                model_.toggleFavorite(app);
                spoken_->favoriteToggled(app);
            },
        .toggleCategory =
            [this, app](const LauncherCategory& category) {
                model_.toggleAssignment(app, category);
                spoken_->assignmentToggled(app, category);
            },
        .toggleHidden =
            [this, app] {
                model_.toggleHidden(app);
                spoken_->hiddenToggled(app);
            },
    };
}

void LauncherView::refreshSoon() {
    if (!std::exchange(refreshPending_, true)) {
        QMetaObject::invokeMethod(
            this, [this] { refresh(); }, Qt::QueuedConnection);
    }
}

void LauncherView::refresh() {
    refreshPending_ = false;
    favorites_ = Favorites::shared().urls();

    const CategoryDepths depths(model_.customCategories());
    std::vector<SidebarList::Row> rows;
    for (const LauncherCategory& category : model_.sidebarCategories()) {
        rows.push_back({category.id, category.name, depths.of(category),
                        category.id == model_.selectedCategoryID()});
    }
    categories_->setRows(std::move(rows));

    search_->setText(QString::fromStdString(model_.query()));
    std::vector<AppItem> shown = model_.filtered();
    count_->setText(QString::number(shown.size()) + texts::kCountSuffix.toString());
    grid_->setApps(std::move(shown));
    if (shownQuery_ != model_.query() || shownCategoryID_ != model_.selectedCategoryID()) {
        if (!shownCategoryID_.empty()) {
            spoken_->found();
        }
        shownQuery_ = model_.query();
        shownCategoryID_ = model_.selectedCategoryID();
        grid_->startAnew();
    }
    refreshSheets();
}

// Sheets are deleted after they have closed, not kept: screen readers find hidden ones in the
// accessibility tree too. The alert waits until the window is visible and no editor covers it.
void LauncherView::refreshSheets() {
    if (showingCategoryEditor_ && editor_ == nullptr) {
        editor_ = makeCategoryEditor();
        editor_->present();
    } else if (!showingCategoryEditor_ && editor_ != nullptr) {
        close(*std::exchange(editor_, nullptr));
    }
    if (!model_.launchError()) {
        if (alert_ != nullptr) {
            close(*std::exchange(alert_, nullptr));
        }
        return;
    }
    if (!isVisible() || editor_ != nullptr) {
        return;
    }
    if (alert_ == nullptr) {
        alert_ = new AlertSheet(texts::kLaunchErrorTitle.toString(), this);
        alert_->dismiss = [this] { model_.clearLaunchError(); };
    }
    alert_->setMessage(displayMessage(*model_.launchError()));
    alert_->present();
}

void LauncherView::close(Sheet& sheet) {
    // Orca says nothing of where the keyboard focus goes if it finds nothing where it was.
    constexpr int kForScreenReaders = 1000;
    sheet.withdraw();
    keepKeyboard();
    QTimer::singleShot(QAccessible::isActive() ? kForScreenReaders : 0, &sheet,
                       &QObject::deleteLater);
}

// Moves the focus to the search field where it would be on no widget: the one that had it before
// the sheet opened may no longer exist.
void LauncherView::keepKeyboard() {
    const QWidget* const focus = window()->focusWidget();
    if (focus == nullptr || !focus->isVisible() || focus == this) {
        search_->take(false);
    }
}

CategoryEditor* LauncherView::makeCategoryEditor() {
    const std::vector<LauncherCategory>& categories = model_.customCategories();
    StringDictionary rules;
    for (const LauncherCategory& category : categories) {
        if (!rules.emplace(category.id, model_.ruleText(category)).second) {
            // The editor could keep only one of the two and would lose the other. The store is not
            // changed.
            fatalError("Duplicate values for key: '" + displayText(category.id).toStdString() +
                       "'");
        }
    }
    auto* const editor = new CategoryEditor(
        categories, std::move(rules), text_,
        [this](const std::vector<LauncherCategory>& edited, const StringDictionary& editedRules) {
            model_.setCategoriesAndRules(edited, editedRules);
        },
        this);
    editor->dismiss = [this] {
        showingCategoryEditor_ = false;
        refreshSheets();
    };
    return editor;
}

void LauncherView::refreshIcons() {
    // Desktops tell of one change several times.
    if (!std::exchange(iconsPending_, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                iconsPending_ = false;
                icons_.refresh();
            },
            Qt::QueuedConnection);
    }
}

void LauncherView::startSearchAnew() {
    if (editor_ == nullptr && alert_ == nullptr) {
        search_->take(true);
    }
}

void LauncherView::reload() {
    icons_.refresh();
    model_.reload();
    spoken_->reloaded();
}

void LauncherView::showSuggestions() {
    auto* const menu = new PopupMenu(texts::kSearchSuggestions.toString(), this);
    const auto suggest = [this, menu](const QString& text, const std::string& query,
                                      std::string_view categoryID) {
        menu->addEntry(text, {}, [this, query, categoryID] {
            model_.setQuery(query);
            model_.setSelectedCategoryID(std::string(categoryID));
            search_->take(false);
        });
    };
    suggest(texts::kSuggestRecent.toString(), {}, kRecentID);
    suggest(texts::kSuggestFavorites.toString(), {}, kFavoritesID);
    menu->addSeparator();
    for (const LauncherCategory& category : model_.customCategories()) {
        suggest(texts::kSuggestCategory.toString() + menuText(category.name),
                "cat:" + category.name, kAllID);
    }
    menu->openAt(*suggestions_,
                 suggestions_->pressedByPointer() ? PopupMenu::By::Pointer : PopupMenu::By::Key);
}

bool LauncherView::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::InputMethod) {
        // When the focus changes, Qt may reset the input method with an event without text, which
        // must not change the focus again.
        const auto& composed = static_cast<const QInputMethodEvent&>(*event);
        if (composed.preeditString().isEmpty() && composed.commitString().isEmpty()) {
            return true;
        }
        search_->take(false);
        QCoreApplication::sendEvent(search_->line(), event);
        return true;
    }
    return QWidget::eventFilter(object, event);
}

void LauncherView::keyPressEvent(QKeyEvent* event) {
    if (event->keyCombination() == (Qt::CTRL | Qt::Key_F)) {
        search_->take(true);
        return;
    }
    const Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    switch (event->key()) {
        case Qt::Key_Escape:
            if (model_.query().empty()) {
                onEscape();
            } else {
                model_.setQuery({});
                search_->take(false);
            }
            return;
        case Qt::Key_Down:
            if (search_->line()->hasFocus()) {
                grid_->enter();
                return;
            }
            break;
        default:
            break;
    }
    // A letter typed anywhere goes to the search field.
    if ((event->modifiers() & commands) == 0 && !event->text().isEmpty() &&
        event->text().front().isPrint() && !search_->line()->hasFocus()) {
        search_->type(*event);
        return;
    }
    QWidget::keyPressEvent(event);
}

void LauncherView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // An error may have come while the window was hidden.
    refreshSheets();
}

// Paints the background of the sidebar, the grid and the footer, which paint none themselves.
void LauncherView::paintEvent(QPaintEvent*) {
    const Appearance appearance(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath window;
    const int radius = windowRadius(*this);
    window.addRoundedRect(rect(), radius, radius);
    // Clips the rounded shape of the whole window, so that each part keeps the window's corners.
    const auto tinted = [&](const QRect& part, const QColor& tint) {
        painter.setClipRect(part);
        painter.fillPath(window, tint);
    };
    painter.fillPath(window, appearance.material);
    const QRect sidebar(0, 0, sidebar_->width(), height());
    tinted(sidebar, appearance.shade);
    tinted(sidebar, appearance.recess);
    tinted(footer_->geometry(), appearance.footer);
    tinted(QRect(sidebar_->width(), 0, 1, height()), appearance.outline);
    tinted(QRect(footer_->geometry().topLeft(), QSize(footer_->width(), 1)), appearance.outline);
    painter.setClipping(false);
    if (!isFlush(*this)) {
        const qreal pixel = 1 / devicePixelRatioF();
        const qreal half = pixel / 2;
        painter.setPen(QPen(appearance.hairline, pixel));
        painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), radius - half,
                                radius - half);
    }
}

}  // namespace tavo
