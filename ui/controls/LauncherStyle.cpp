#include "ui/controls/LauncherStyle.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

#include "ui/controls/ControlPainting.h"
#include "ui/controls/PopupMenu.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Motion.h"

namespace tavo {
namespace {

using namespace controls;

// What the toolkit calls the windows that it makes itself.
bool isToolTip(const QWidget* widget) {
    return widget != nullptr && widget->inherits("QTipLabel");
}

bool isPickerPopup(const QWidget* widget) {
    return widget != nullptr && widget->inherits("QComboBoxPrivateContainer");
}

bool isPickerList(const QWidget* widget) {
    return widget != nullptr && widget->inherits("QComboBoxListView");
}

bool isPopup(const QWidget* widget) {
    return isToolTip(widget) || isPickerPopup(widget) || qobject_cast<const QMenu*>(widget);
}

bool isBlended(const QWidget* widget) {
    return widget != nullptr && widget->testAttribute(Qt::WA_TranslucentBackground);
}

// Colours are not free to work out, and the next ones asked for are nearly always those asked for
// last.
Appearance appearanceOf(const QPalette& palette) {
    static QPalette last = palette;
    static Appearance appearance(palette);
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::Highlight}) {
        if (last.color(QPalette::Active, role) != palette.color(QPalette::Active, role)) {
            last = palette;
            appearance = Appearance(palette);
        }
    }
    return appearance;
}

// A painter for smooth shapes, given back as it was.
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

// Whole pixels, row by row: a polygon would round its corners' points away.
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

// The toolkit writes in fields with the colours of their palettes, whatever ground we paint. So a
// field's palette gets the window's: the text colour unless the field's owner has chosen one, and
// for selected text a ground that it is legible on.
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
    own.setColor(QPalette::Highlight, look.accentGround);
    own.setColor(QPalette::HighlightedText, look.textOnAccent);
    if (own != before) {
        line.setPalette(own);
    }
}

// The menus that the toolkit makes for text fields come with symbols of the desktop's own hand.
void dressMenu(QMenu& menu) {
    menu.setAttribute(Qt::WA_WindowPropagation);
    menu.setFont(interfaceFont(metrics::kBody));
    if (dynamic_cast<PopupMenu*>(&menu) == nullptr) {
        for (QAction* const action : menu.actions()) {
            action->setIcon({});
        }
    }
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
    } else if (isToolTip(widget)) {
        widget->setFont(interfaceFont(metrics::kCallout));
        widget->setPalette(QApplication::palette());
    } else if (isPickerPopup(widget)) {
        widget->installEventFilter(this);
    } else if (isPickerList(widget)) {
        static_cast<QAbstractItemView*>(widget)->viewport()->setAutoFillBackground(false);
    } else if (auto* const line = qobject_cast<QLineEdit*>(widget)) {
        line->installEventFilter(this);
        colorText(*line);
    }
}

void LauncherStyle::unpolish(QWidget* widget) {
    widget->removeEventFilter(this);
    QProxyStyle::unpolish(widget);
}

bool LauncherStyle::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        if (auto* const line = qobject_cast<QLineEdit*>(object)) {
            colorText(*line);
        }
    } else if (event->type() == QEvent::Show) {
        auto* const popup = qobject_cast<QWidget*>(object);
        if (isPickerPopup(popup) && !isBlended(popup)) {
            popup->setMask(roundedRegion(popup->rect(), kMenuRadius));
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
        // Those are part of the panel and of the control.
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void LauncherStyle::drawControl(ControlElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
    const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const auto* const entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    const auto* const picker = qstyleoption_cast<const QStyleOptionComboBox*>(option);
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
    } else if (element == CE_ComboBoxLabel && picker != nullptr) {
        paintPicked(*Smooth(*painter), *picker,
                    subControlRect(CC_ComboBox, picker, SC_ComboBoxEditField, widget), look);
    } else if (element == CE_ItemViewItem && choice != nullptr && isPickerList(widget)) {
        paintChoice(*Smooth(*painter), *choice, look);
    } else if (element == CE_ShapedFrame && isPickerPopup(widget)) {
        paintPopup(*Smooth(*painter), option->rect, kMenuRadius, !isBlended(widget), look);
    } else if (element != CE_MenuEmptyArea && element != CE_MenuHMargin &&
               element != CE_MenuVMargin) {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void LauncherStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                       QPainter* painter, const QWidget* widget) const {
    const auto* const picker = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ComboBox && picker != nullptr) {
        paintPicker(*Smooth(*painter), *picker, appearanceOf(option->palette));
    } else if (control == CC_ScrollBar && slider != nullptr) {
        if (slider->maximum > slider->minimum) {
            const bool pressed = slider->activeSubControls.testFlag(SC_ScrollBarSlider) &&
                                 slider->state.testFlag(State_Sunken);
            paintThumb(*Smooth(*painter),
                       subControlRect(control, option, SC_ScrollBarSlider, widget),
                       slider->orientation, pressed, appearanceOf(option->palette));
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
            // The field brings two pixels of its own on either side.
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
    switch (part) {
        case QStyle::SC_ComboBoxEditField:
            return rect.adjusted(kTextInset, 0, -kPickerArrow, 0);
        case QStyle::SC_ComboBoxArrow:
            return {rect.right() + 1 - kPickerArrow, rect.top(), kPickerArrow, rect.height()};
        case QStyle::SC_ComboBoxListBoxPopup:
            return rect.adjusted(0, -kEntryMargin, 0, kEntryMargin);
        default:
            return rect;
    }
}

// A thumb in a groove as long as the bar; there are no arrows.
QRect scrollBarPart(QStyle::SubControl part, const QStyleOptionSlider& option) {
    const bool vertical = option.orientation == Qt::Vertical;
    const int length = vertical ? option.rect.height() : option.rect.width();
    const qint64 range = static_cast<qint64>(option.maximum) - option.minimum;
    const int thumb =
        range <= 0 ? length
                   : std::clamp(static_cast<int>(option.pageStep * static_cast<qint64>(length) /
                                                 (range + option.pageStep)),
                                std::min(kShortestThumb, length), length);
    const int start = QStyle::sliderPositionFromValue(
        option.minimum, option.maximum, option.sliderPosition, length - thumb, option.upsideDown);
    const auto along = [&](int from, int size) {
        return vertical
                   ? QRect(option.rect.left(), option.rect.top() + from, option.rect.width(), size)
                   : QRect(option.rect.left() + from, option.rect.top(), size,
                           option.rect.height());
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
            // The toolkit measures the ink of a text, which may be narrower than the text.
            return {size.width() + kTextInset + kPickerArrow + kTextMargin, controlHeight(*option)};
        case CT_PushButton:
            return {size.width() + 2 * kButtonInset, controlHeight(*option)};
        case CT_MenuItem:
            if (entry != nullptr && entry->menuItemType == QStyleOptionMenuItem::Separator) {
                return {size.width(), kDivider};
            } else if (entry != nullptr) {
                // In a menu with submenus, the space of their arrows is at every entry's end.
                return {std::min(kWidestEntry,
                                 entryTextStart(*entry) + size.width() + kEntryInset + kEntryArrow),
                        std::max(entry->fontMetrics.height(), kEntrySymbol) + 2 * kEntryMargin};
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
            if (isPickerPopup(widget)) {
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
            return kEntrySymbol;
        case PM_SmallIconSize:
            return kEntrySymbol;
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
