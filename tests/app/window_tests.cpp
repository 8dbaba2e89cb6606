#include "app/window_tests.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPixmap>
#include <QTest>
#include <gtest/gtest.h>

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"

namespace tembrix {

bool activate(QWidget& window) {
    return QTest::qWaitFor([&window] {
        if (window.isActiveWindow())
            return true;
        window.activateWindow();
        return false;
    });
}

void picture(QWidget& window, const QString& name) {
    const QString folder = qEnvironmentVariable("TEMBRIX_PICTURES");
    if (!folder.isEmpty())
        window.grab().save(folder + "/" + name + ".png");
}

QStringList unnamedControls(const QWidget& window) {
    QStringList unnamed;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const bool operable = qobject_cast<const QAbstractButton*>(widget) ||
                              qobject_cast<const QLineEdit*>(widget) ||
                              qobject_cast<const QComboBox*>(widget) ||
                              qobject_cast<const QAbstractItemView*>(widget);
        // Qt's own parts of a control, such as the clear button of a field, are not checked.
        const bool own = !widget->objectName().startsWith("qt_");
        if (operable && own && widget->isVisibleTo(&window) && widget->accessibleName().isEmpty() &&
            !qobject_cast<const QLineEdit*>(widget->parentWidget()))
            unnamed << QString::fromLatin1(widget->metaObject()->className()) + " " +
                           widget->objectName();
    }
    return unnamed;
}

}  // namespace tembrix

int main(int argc, char** argv) {
    qputenv("TZ", "UTC");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    tembrix::theme::applyTheme(application);
    tembrix::installAccessibility();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
