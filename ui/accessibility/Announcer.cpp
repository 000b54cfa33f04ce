#include "ui/accessibility/Announcer.h"

#include <QAccessibleWidget>
#include <QWidget>
#include <utility>

#include "ui/accessibility/AccessibleItems.h"

namespace tavo {
namespace {

constexpr int kRestMs = 500;

#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
class StatusBar;

// What was announced last. Deleted by its status bar.
class Notification final : public QAccessibleInterface {
public:
    explicit Notification(StatusBar& statusBar) : statusBar_(statusBar) {}

    bool isValid() const override;
    QObject* object() const override { return nullptr; }
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? said : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::Notification; }
    QAccessible::State state() const override { return {}; }

    QString said;

private:
    StatusBar& statusBar_;
};

// A status bar, with the notification as its last child once there was something to say.
class StatusBar final : public QAccessibleWidget {
public:
    explicit StatusBar(QWidget& widget) : QAccessibleWidget(&widget, QAccessible::StatusBar) {}

    ~StatusBar() override {
        if (notification_ != nullptr) {
            QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(notification_));
        }
    }

    int childCount() const override {
        return QAccessibleWidget::childCount() + (notification_ != nullptr ? 1 : 0);
    }
    QAccessibleInterface* child(int index) const override {
        return notification_ != nullptr && index == QAccessibleWidget::childCount()
                   ? notification_
                   : QAccessibleWidget::child(index);
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return notification_ != nullptr && child == notification_
                   ? QAccessibleWidget::childCount()
                   : QAccessibleWidget::indexOfChild(child);
    }

    void say(const QString& text) {
        if (notification_ == nullptr) {
            notification_ = new Notification(*this);
            QAccessible::registerAccessibleInterface(notification_);
        }
        notification_->said = text;
        for (const QAccessible::Event kind : {QAccessible::NameChanged, QAccessible::ObjectShow}) {
            QAccessibleEvent event(notification_, kind);
            QAccessible::updateAccessibility(&event);
        }
    }

private:
    Notification* notification_ = nullptr;
};

bool Notification::isValid() const {
    return statusBar_.isValid();
}

QWindow* Notification::window() const {
    return statusBar_.window();
}

QAccessibleInterface* Notification::parent() const {
    return &statusBar_;
}

QRect Notification::rect() const {
    return statusBar_.rect();
}
#endif

}  // namespace

void announce(QWidget& speaker, const QString& text) {
    if (!QAccessible::isActive()) {
        return;
    }
#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
    for (QWidget* const widget : speaker.window()->findChildren<QWidget*>()) {
        if (givenAccessibleRole(*widget) == QAccessible::StatusBar) {
            if (auto* const statusBar =
                    dynamic_cast<StatusBar*>(QAccessible::queryAccessibleInterface(widget))) {
                statusBar->say(text);
            }
            return;
        }
    }
#else
    QAccessibleAnnouncementEvent event(&speaker, text);
    QAccessible::updateAccessibility(&event);
#endif
}

QAccessibleInterface* makeAccessibleStatusBar(QWidget& statusBar) {
#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
    return new StatusBar(statusBar);
#else
    return new QAccessibleWidget(&statusBar, QAccessible::StatusBar);
#endif
}

Announcer::Announcer(QWidget& speaker) {
    rest_.setSingleShot(true);
    rest_.setInterval(kRestMs);
    QObject::connect(&rest_, &QTimer::timeout, &speaker, [this, &speaker] {
        const auto text = std::exchange(text_, nullptr);
        const QString now = speaker.window()->isActiveWindow() ? text() : QString();
        if (!now.isEmpty()) {
            announce(speaker, now);
        }
    });
}

void Announcer::say(std::function<QString()> text) {
    if (QAccessible::isActive()) {
        text_ = std::move(text);
        rest_.start();
    }
}

}  // namespace tavo
