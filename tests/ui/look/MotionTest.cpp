#include <QProxyStyle>
#include <QWidget>

#include <gtest/gtest.h>

#include "ui/controls/LauncherStyle.h"
#include "ui/look/Motion.h"

namespace tavo {
namespace {

class StyleWithMotionOf final : public QProxyStyle {
public:
    explicit StyleWithMotionOf(int duration) : duration_(duration) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        return hint == SH_Widget_Animation_Duration
                   ? duration_
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }

private:
    int duration_;
};

class Motion : public testing::Test {
protected:
    Motion() { setReducedMotion(false); }
    ~Motion() override { setReducedMotion(true); }

    static int durationUnder(int stylesDuration) {
        StyleWithMotionOf style(stylesDuration);
        QWidget widget;
        widget.setStyle(&style);
        return motionDuration(widget);
    }
};

TEST_F(Motion, takes_120_milliseconds_whatever_longer_time_the_style_takes) {
    EXPECT_EQ(durationUnder(120), 120);
    EXPECT_EQ(durationUnder(250), 120);
}

TEST_F(Motion, there_is_none_where_the_style_has_none) {
    EXPECT_EQ(durationUnder(0), 0);
}

TEST_F(Motion, is_in_the_interfaces_own_style_unless_it_is_switched_off) {
    LauncherStyle style;
    QWidget widget;
    widget.setStyle(&style);
    EXPECT_EQ(motionDuration(widget), 120);
    setReducedMotion(true);
    EXPECT_EQ(motionDuration(widget), 0);
}

TEST_F(Motion, there_is_none_for_who_wants_less) {
    EXPECT_FALSE(reducedMotion());
    setReducedMotion(true);
    EXPECT_TRUE(reducedMotion());
    EXPECT_EQ(durationUnder(120), 0);
}

}  // namespace
}  // namespace tavo
