#include "ui/controls/LauncherStyle.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

#include "ui/controls/ControlPainting.h"
#include "ui/controls/Hover.h"
#include "ui/controls/PopupMenu.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Motion.h"
#include "ui/look/TextScale.h"

namespace tavo {
namespace {

using namespace controls;

// These functions compare with the names of Qt's private classes, whose headers are not public.
bool isToolTip(const QWidget* widget) {
    return widget != nullptr && widget->inherits("QTipLabel");
}

bool isComboBoxPopup(const QWidget* widget) {
    return widget != nullptr && widget->inherits("QComboBoxPrivateContainer");
}

bool isPickerList(const QWidget* widget) {
    return widget != nullptr && widget->inherits("QComboBoxListView");
}

bool isPopup(const QWidget* widget) {
    return isToolTip(widget) || isComboBoxPopup(widget) || qobject_cast<const QMenu*>(widget);
}

bool isBlended(const QWidget* widget) {
    return widget != nullptr && widget->testAttribute(Qt::WA_TranslucentBackground);
}

// Keeps the last result: an Appearance takes time to compute, and is mostly asked for again with
// the same palette.
Appearance appearanceOf(const QPalette& palette) {
    static QPalette last = palette;
    static Appearance appearance(palette);
    if (appearance.moreContrast != moreContrast()) {
        appearance = Appearance(palette);
        last = palette;
    }
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::Highlight}) {
        if (last.color(QPalette::Active, role) != palette.color(QPalette::Active, role)) {
            last = palette;
            appearance = Appearance(palette);
        }
    }
    return appearance;
}

// A painter with antialiasing. The destructor restores the painter's state.
class Smooth {
public:
    explicit Smooth(QPainter& painter) : painter_(painter) {
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
    }
    ~Smooth() { painter_.restore(); }
    Smooth(const Smooth&) = delete;
    Smooth& operator=(const Smooth&) = delete;

    QPainter& operator*() const { return painter_; }

private:
    QPainter& painter_;
};

// Built from rows of whole pixels, because a QRegion made of a polygon has badly rounded corners.
QRegion roundedRegion(const QRect& rect, int radius) {
    QRegion region(rect.adjusted(0, radius, 0, -radius));
    for (int row = 0; row < radius; ++row) {
        const double rise = radius - row - 0.5;
        const int inset =
            radius - static_cast<int>(std::lround(std::sqrt(radius * radius - rise * rise)));
        const QRect line(rect.left() + inset, rect.top() + row, rect.width() - 2 * inset, 1);
        region += line;
        region += line.translated(0, rect.height() - 1 - 2 * row);
    }
    return region;
}

// Qt takes the colours of a line edit's text from its palette and knows nothing of the background
// that this style paints. So the line edit gets the window's text colour, unless its owner has set
// one, and for selected text a background on which that text is legible.
void colorText(QLineEdit& line) {
    constexpr char kOurText[] = "tavoTextColor";
    const QWidget* const parent = line.parentWidget();
    const Appearance look =
        appearanceOf(parent != nullptr ? parent->palette() : QApplication::palette());
    QPalette own = line.palette();
    const QPalette before = own;
    if (!own.isBrushSet(QPalette::Active, QPalette::Text) ||
        line.property(kOurText) == QVariant(own.color(QPalette::Active, QPalette::Text))) {
        own.setColor(QPalette::Text, look.text);
        own.setColor(QPalette::PlaceholderText, look.promptText);
        line.setProperty(kOurText, look.text);
    }
    own.setColor(QPalette::Disabled, QPalette::Text, look.disabledText);
    own.setColor(QPalette::Highlight, look.accentBackground);
    own.setColor(QPalette::HighlightedText, look.textOnAccent);
    if (own != before) {
        line.setPalette(own);
    }
}

// The context menus of Qt's line edits have icons of the desktop's theme, which look unlike the
// program's symbols.
void dressMenu(QMenu& menu) {
    menu.setAttribute(Qt::WA_WindowPropagation);
    useInterfaceFont(menu, metrics::kBody);
    if (dynamic_cast<PopupMenu*>(&menu) == nullptr) {
        for (QAction* const action : menu.actions()) {
            action->setIcon({});
        }
    }
}

// With larger text a menu may be as wide as its screen.
int widestEntry(const QWidget* menu) {
    const int room = menu != nullptr && menu->screen() != nullptr
                         ? menu->screen()->availableSize().width() - 2 * kMenuPadding
                         : kWidestEntry;
    return std::max(kWidestEntry, std::min(grownWithText(kWidestEntry), room));
}

int controlHeight(const QStyleOption& option) {
    return option.fontMetrics.height() + 2 * kTextMargin;
}

}  // namespace

LauncherStyle::LauncherStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void LauncherStyle::polish(QPalette& palette) {
    QProxyStyle::polish(palette);
    const Appearance look(palette);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, look.text);
        palette.setColor(QPalette::Disabled, role, look.disabledText);
    }
    palette.setColor(QPalette::PlaceholderText, look.promptText);
    palette.setColor(QPalette::Base, look.field);
    palette.setColor(QPalette::ToolTipBase, look.menu);
}

void LauncherStyle::polish(QApplication* application) {
    QProxyStyle::polish(application);
    for (const Qt::UIEffect effect : {Qt::UI_AnimateMenu, Qt::UI_FadeMenu, Qt::UI_AnimateCombo,
                                      Qt::UI_AnimateTooltip, Qt::UI_FadeTooltip}) {
        QApplication::setEffectEnabled(effect, false);
    }
}

void LauncherStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (isPopup(widget)) {
        const QWidget* const owner = widget->parentWidget();
        widget->setAttribute(Qt::WA_TranslucentBackground,
                             owner != nullptr && isBlended(owner->window()));
    }
    if (auto* const menu = qobject_cast<QMenu*>(widget)) {
        dressMenu(*menu);
        widget->installEventFilter(this);
    } else if (isToolTip(widget)) {
        widget->setFont(interfaceFont(metrics::kCallout));
        widget->setPalette(QApplication::palette());
    } else if (isComboBoxPopup(widget)) {
        widget->installEventFilter(this);
    } else if (isPickerList(widget)) {
        static_cast<QAbstractItemView*>(widget)->viewport()->setAutoFillBackground(false);
    } else if (auto* const line = qobject_cast<QLineEdit*>(widget)) {
        line->installEventFilter(this);
        colorText(*line);
    }
}

bool LauncherStyle::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        if (auto* const line = qobject_cast<QLineEdit*>(object)) {
            colorText(*line);
        }
    } else if (event->type() == QEvent::Show) {
        auto* const popup = qobject_cast<QWidget*>(object);
        if (isComboBoxPopup(popup) && !isBlended(popup)) {
            popup->setMask(roundedRegion(popup->rect(), kMenuRadius));
        }
    } else if (event->type() == QEvent::Hide) {
        auto* const popup = qobject_cast<QWidget*>(object);
        if (QWidget* const owner = popup != nullptr ? popup->parentWidget() : nullptr) {
            // Delayed until the popup is hidden: until then the pointer is over it.
            QMetaObject::invokeMethod(
                owner, [owner] { refreshHover(*owner->window()); }, Qt::QueuedConnection);
        }
    }
    return QProxyStyle::eventFilter(object, event);
}

void LauncherStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                  QPainter* painter, const QWidget* widget) const {
    const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    if (element == PE_PanelLineEdit && frame != nullptr && frame->lineWidth > 0) {
        paintField(*Smooth(*painter), *frame, appearanceOf(option->palette));
    } else if (element == PE_PanelMenu || element == PE_PanelTipLabel) {
        paintPopup(*Smooth(*painter), option->rect, element == PE_PanelMenu ? kMenuRadius : kRadius,
                   !isBlended(widget), appearanceOf(option->palette));
    } else if (element != PE_FrameMenu && element != PE_FrameFocusRect) {
        // PE_PanelMenu paints the frame of menus, and the controls paint their own focus rings.
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void LauncherStyle::drawControl(ControlElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
    const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const auto* const entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    const auto* const comboBox = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    const auto* const choice = qstyleoption_cast<const QStyleOptionViewItem*>(option);
    const Appearance look = appearanceOf(option->palette);
    if (element == CE_PushButtonBevel && button != nullptr) {
        paintButton(*Smooth(*painter), *button, look);
    } else if (element == CE_PushButtonLabel && button != nullptr) {
        paintButtonText(*Smooth(*painter), *button, look);
    } else if (element == CE_MenuItem && entry != nullptr) {
        paintMenuEntry(*Smooth(*painter), *entry, look);
    } else if (element == CE_MenuScroller) {
        paintMenuScroller(*Smooth(*painter), option->rect, option->state.testFlag(State_DownArrow),
                          look);
    } else if (element == CE_ComboBoxLabel && comboBox != nullptr) {
        paintComboBoxText(*Smooth(*painter), *comboBox,
                          subControlRect(CC_ComboBox, comboBox, SC_ComboBoxEditField, widget),
                          look);
    } else if (element == CE_ItemViewItem && choice != nullptr && isPickerList(widget)) {
        paintComboBoxEntry(*Smooth(*painter), *choice, look);
    } else if (element == CE_ShapedFrame && isComboBoxPopup(widget)) {
        paintPopup(*Smooth(*painter), option->rect, kMenuRadius, !isBlended(widget), look);
    } else if (element != CE_MenuEmptyArea && element != CE_MenuHMargin &&
               element != CE_MenuVMargin) {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void LauncherStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                       QPainter* painter, const QWidget* widget) const {
    const auto* const comboBox = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ComboBox && comboBox != nullptr) {
        paintComboBox(*Smooth(*painter), *comboBox, appearanceOf(option->palette));
    } else if (control == CC_ScrollBar && slider != nullptr) {
        if (slider->maximum > slider->minimum) {
            const bool pressed = slider->activeSubControls.testFlag(SC_ScrollBarSlider) &&
                                 slider->state.testFlag(State_Sunken);
            paintThumb(*Smooth(*painter),
                       subControlRect(control, option, SC_ScrollBarSlider, widget), pressed,
                       appearanceOf(option->palette));
        }
    } else {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

QRect LauncherStyle::subElementRect(SubElement element, const QStyleOption* option,
                                    const QWidget* widget) const {
    switch (element) {
        case SE_LineEditContents: {
            const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            // QLineEdit adds two pixels on either side.
            constexpr int kInset = kTextInset - 2;
            return frame != nullptr && frame->lineWidth > 0
                       ? option->rect.adjusted(kInset, 0, -kInset, 0)
                       : QProxyStyle::subElementRect(element, option, widget);
        }
        case SE_PushButtonContents:
        case SE_PushButtonFocusRect:
        case SE_PushButtonBevel:
            return option->rect;
        default:
            return QProxyStyle::subElementRect(element, option, widget);
    }
}

namespace {

QRect pickerPart(QStyle::SubControl part, const QRect& rect) {
    const int arrow = grownWithText(kComboBoxArrow);
    switch (part) {
        case QStyle::SC_ComboBoxEditField:
            return rect.adjusted(kTextInset, 0, -arrow, 0);
        case QStyle::SC_ComboBoxArrow:
            return {rect.right() + 1 - arrow, rect.top(), arrow, rect.height()};
        case QStyle::SC_ComboBoxListBoxPopup:
            return rect.adjusted(0, -kEntryMargin, 0, kEntryMargin);
        default:
            return rect;
    }
}

// The parts of a vertical scroll bar (the program shows no other): a thumb in a groove of the full
// length, without arrow buttons.
QRect scrollBarPart(QStyle::SubControl part, const QStyleOptionSlider& option) {
    const int length = option.rect.height();
    const qint64 range = static_cast<qint64>(option.maximum) - option.minimum;
    const int thumb =
        range <= 0 ? length
                   : std::clamp(static_cast<int>(option.pageStep * static_cast<qint64>(length) /
                                                 (range + option.pageStep)),
                                std::min(kShortestThumb, length), length);
    const int start = QStyle::sliderPositionFromValue(
        option.minimum, option.maximum, option.sliderPosition, length - thumb, option.upsideDown);
    const auto along = [&](int from, int size) {
        return QRect(option.rect.left(), option.rect.top() + from, option.rect.width(), size);
    };
    switch (part) {
        case QStyle::SC_ScrollBarSlider:
            return along(start, thumb);
        case QStyle::SC_ScrollBarSubPage:
            return along(0, start);
        case QStyle::SC_ScrollBarAddPage:
            return along(start + thumb, length - start - thumb);
        case QStyle::SC_ScrollBarGroove:
            return option.rect;
        default:
            return {};
    }
}

}  // namespace

QRect LauncherStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                    SubControl part, const QWidget* widget) const {
    if (control == CC_ComboBox) {
        return pickerPart(part, option->rect);
    }
    const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && slider != nullptr) {
        return scrollBarPart(part, *slider);
    }
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QSize LauncherStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                      const QSize& size, const QWidget* widget) const {
    const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    const auto* const entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    switch (type) {
        case CT_LineEdit:
            return frame != nullptr && frame->lineWidth > 0
                       ? QSize(size.width() + 2 * kTextInset, controlHeight(*option))
                       : QProxyStyle::sizeFromContents(type, option, size, widget);
        case CT_ComboBox:
            // Qt passes the bounding rectangle of the glyphs, which may be narrower than the
            // advance of the text.
            return {size.width() + kTextInset + grownWithText(kComboBoxArrow) + kTextMargin,
                    controlHeight(*option)};
        case CT_PushButton:
            return {size.width() + 2 * kButtonInset, controlHeight(*option)};
        case CT_MenuItem:
            if (entry != nullptr && entry->menuItemType == QStyleOptionMenuItem::Separator) {
                return {size.width(), kDivider};
            } else if (entry != nullptr) {
                // In a menu with submenus, each entry has space for an arrow at its end.
                return {std::min(widestEntry(widget),
                                 entryTextStart(*entry) + size.width() + kEntryInset + kEntryArrow),
                        std::max(entry->fontMetrics.height(), grownWithText(kEntrySymbol)) +
                            2 * kEntryMargin};
            }
            break;
        case CT_ItemViewItem:
            if (isPickerList(widget)) {
                return {size.width() + 2 * kEntryInset,
                        option->fontMetrics.height() + 2 * kEntryMargin};
            }
            break;
        default:
            break;
    }
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

int LauncherStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                               const QWidget* widget) const {
    switch (metric) {
        case PM_DefaultFrameWidth:
            if (isComboBoxPopup(widget)) {
                return kMenuPadding;
            }
            break;
        case PM_MenuHMargin:
        case PM_MenuVMargin:
            return kMenuPadding;
        case PM_MenuPanelWidth:
        case PM_MenuDesktopFrameWidth:
        case PM_SubMenuOverlap:
        case PM_ButtonShiftHorizontal:
        case PM_ButtonShiftVertical:
            return 0;
        case PM_MenuScrollerHeight:
        case PM_SmallIconSize:
            return grownWithText(kEntrySymbol);
        case PM_ToolTipLabelFrameWidth:
            return kTextMargin;
        case PM_ScrollBarExtent:
            return kScrollBar;
        case PM_ScrollBarSliderMin:
            return kShortestThumb;
        default:
            break;
    }
    return QProxyStyle::pixelMetric(metric, option, widget);
}

int LauncherStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                             QStyleHintReturn* result) const {
    switch (hint) {
        case SH_Menu_Mask:
        case SH_ToolTip_Mask: {
            auto* const mask = qstyleoption_cast<QStyleHintReturnMask*>(result);
            if (mask == nullptr || option == nullptr || isBlended(widget)) {
                return 0;
            }
            mask->region =
                roundedRegion(option->rect, hint == SH_Menu_Mask ? kMenuRadius : kRadius);
            return 1;
        }
        case SH_Menu_Scrollable:
        case SH_Menu_MouseTracking:
        case SH_Menu_SelectionWrap:
        case SH_Menu_SpaceActivatesItem:
        case SH_Menu_SloppySubMenus:
        case SH_ComboBox_ListMouseTracking:
            return 1;
        case SH_Menu_SubMenuPopupDelay:
            return 100;
        case SH_ComboBox_PopupFrameStyle:
            return static_cast<int>(QFrame::StyledPanel) | static_cast<int>(QFrame::Plain);
        case SH_ToolTipLabel_Opacity:
            return 255;
        case SH_Menu_AllowActiveAndDisabled:
        case SH_Menu_FadeOutOnHide:
        case SH_Menu_FlashTriggeredItem:
        case SH_ComboBox_Popup:
        case SH_ScrollBar_ContextMenu:
        case SH_ScrollBar_Transient:
        case SH_UnderlineShortcut:
        case SH_Widget_Animate:
            return 0;
        case SH_Widget_Animation_Duration:
            return reducedMotion() ? 0 : kMotionDuration;
        default:
            return QProxyStyle::styleHint(hint, option, widget, result);
    }
}

}  // namespace tavo
