#include "app/theme/theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

#include "app/theme/flat_icon_engine.h"
#include "app/theme/style_sheet.h"

// Resources of a static library are linked only if they are initialized explicitly, outside of any
// namespace.
static void linkResources() {
    Q_INIT_RESOURCE(theme);
}

namespace tembrix::theme {
namespace {

QPalette palette() {
    QPalette result;
    const auto set = [&](QPalette::ColorRole role, const QColor& normal, const QColor& disabled) {
        result.setColor(role, normal);
        result.setColor(QPalette::Disabled, role, disabled);
    };
    set(QPalette::Window, background, background);
    set(QPalette::Base, panel, panel);
    set(QPalette::AlternateBase, background, background);
    set(QPalette::Button, raised, raised);
    set(QPalette::ToolTipBase, raised, raised);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::BrightText, QPalette::ToolTipText})
        set(role, text, disabledText);
    set(QPalette::PlaceholderText, disabledText, disabledText);
    set(QPalette::Highlight, accent, line);
    set(QPalette::HighlightedText, onAccent, disabledText);
    set(QPalette::Link, accent, disabledText);
    set(QPalette::LinkVisited, accent, disabledText);
    set(QPalette::Light, hovered, hovered);
    set(QPalette::Midlight, line, line);
    set(QPalette::Mid, line, line);
    set(QPalette::Dark, background, background);
    set(QPalette::Shadow, picture, picture);
    return result;
}

}  // namespace

void applyTheme(QApplication& application) {
    linkResources();
    application.setStyle(QStyleFactory::create("Fusion"));
    application.setPalette(palette());
    application.setFont(font());
    // Desktops without icon settings may lack a theme name and the usual search path.
    auto paths = QIcon::themeSearchPaths();
    if (!paths.contains("/usr/share/icons"))
        paths.append("/usr/share/icons");
    QIcon::setThemeSearchPaths(paths);
    QIcon::setThemeName("breeze-dark");
    QIcon::setFallbackThemeName("breeze");
    application.setStyleSheet(styleSheet());
}

QFont font(int pixelSize, QFont::Weight weight) {
    QFont result;
    result.setFamilies({"Inter", "Noto Sans", "DejaVu Sans", "sans-serif"});
    result.setPixelSize(pixelSize);
    result.setWeight(weight);
    return result;
}

QIcon icon(const QString& name, const QColor& color) {
    const auto shape = QIcon::fromTheme(name);
    return shape.isNull() ? QIcon() : QIcon(new FlatIconEngine(shape, color));
}

QColor toQColor(const Color& color) {
    return QColor::fromRgbF(static_cast<float>(qBound(0.0, color.red, 1.0)),
                            static_cast<float>(qBound(0.0, color.green, 1.0)),
                            static_cast<float>(qBound(0.0, color.blue, 1.0)),
                            static_cast<float>(qBound(0.0, color.alpha, 1.0)));
}

QColor textOn(const QColor& ground) {
    const Color color{ground.redF(), ground.greenF(), ground.blueF(), 1};
    const bool white = contrast(color, {1, 1, 1, 1}) > contrast(color, {0, 0, 0, 1});
    return white ? QColor(Qt::white) : QColor(Qt::black);
}

}  // namespace tembrix::theme
