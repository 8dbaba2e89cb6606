#include "app/theme/theme.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QFontInfo>
#include <QImage>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <gtest/gtest.h>

#include "app/theme/style_sheet.h"

namespace tembrix {
namespace {

// The colors of the opaque pixels of an icon.
QSet<QRgb> solidColors(const QIcon& icon, QIcon::Mode mode) {
    const auto image = icon.pixmap(QSize(32, 32), 1.0, mode).toImage();
    QSet<QRgb> colors;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (const auto pixel = image.pixelColor(x, y); pixel.alpha() == 255)
                colors.insert(pixel.rgb());
    return colors;
}

TEST(Theme, EveryIconThatTheSourcesNameIsThere) {
    const QRegularExpression name(
        R"re((?:theme::icon\(|makeIconButton\([^;]*?"[^"]*",\s*)"([a-z0-9-]+)")re");
    QSet<QString> names;
    QDirIterator files(TEMBRIX_SOURCE "/src/app", {"*.cpp"}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        for (auto found = name.globalMatch(QString::fromUtf8(file.readAll())); found.hasNext();)
            names.insert(found.next().captured(1));
    }
    EXPECT_FALSE(names.isEmpty());
    for (const auto& each : names)
        EXPECT_FALSE(theme::icon(each).isNull()) << each.toStdString();
    EXPECT_TRUE(theme::icon("no-such-icon-anywhere").isNull());
}

TEST(Theme, IconsAreFlatAndDimmedWhereDisabled) {
    for (const char* name : {"media-playback-start", "edit-delete", "starred-symbolic"}) {
        EXPECT_EQ(solidColors(theme::icon(name), QIcon::Normal), QSet{theme::text.rgb()}) << name;
        EXPECT_EQ(solidColors(theme::icon(name), QIcon::Disabled), QSet{theme::disabledText.rgb()});
    }
    EXPECT_EQ(solidColors(theme::icon("edit-delete", theme::star), QIcon::Normal),
              QSet{theme::star.rgb()});
}

TEST(Theme, ControlsAreStyled) {
    EXPECT_FALSE(theme::styleSheet().contains('@'));
    EXPECT_EQ(QFontInfo(QApplication::font()).family(), "Inter");
    QPushButton plain("Добавить"), accented("Добавить");
    accented.setProperty("look", "accented");
    for (auto* button : {&plain, &accented})
        button->resize(button->sizeHint());
    const auto at = [](QPushButton& button) {
        return button.grab().toImage().pixelColor(6, button.height() / 2).rgb();
    };
    EXPECT_EQ(at(plain), theme::raised.rgb());
    EXPECT_EQ(at(accented), theme::accentFill.rgb());
    EXPECT_EQ(plain.height(), theme::controlHeight);
    accented.setEnabled(false);
    EXPECT_EQ(at(accented), theme::raised.rgb());
}

TEST(Theme, TextOnDataColorsIsReadable) {
    EXPECT_EQ(theme::textOn(Qt::yellow), QColor(Qt::black));
    EXPECT_EQ(theme::textOn(QColor(0x10, 0x30, 0x80)), QColor(Qt::white));
    EXPECT_EQ(theme::toQColor({2, -1, 0.5, 1}).name(), "#ff0080");
    EXPECT_GE(contrast({theme::accentFill.redF(), theme::accentFill.greenF(),
                        theme::accentFill.blueF(), 1},
                       {1, 1, 1, 1}),
              4.5);
    for (int rgb = 0; rgb < 0x1000000; rgb += 0x10101 / 3) {
        const QColor ground((rgb >> 16) & 255, (rgb >> 8) & 255, rgb & 255);
        const QColor ink = theme::textOn(ground);
        EXPECT_GE(contrast({ground.redF(), ground.greenF(), ground.blueF(), 1},
                           {ink.redF(), ink.greenF(), ink.blueF(), 1}),
                  4.5)
            << ground.name().toStdString();
    }
}

}  // namespace
}  // namespace tembrix
