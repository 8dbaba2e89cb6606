#include "app/shell/main_menu.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QMenu>
#include <QMenuBar>

#include "ports/texts.h"

#include "app/widgets/letter_keys.h"

namespace tembrix {

namespace {

constexpr QLatin1String quitName("macQuitAppTitle");

QAction* makeQuitAction(const Texts& texts, QObject* parent) {
    auto* quit = new QAction(QString::fromStdString(texts.text("macQuitAppTitle")), parent);
    quit->setObjectName(quitName);
    quit->setShortcuts(letterKeys(Qt::ControlModifier, Qt::Key_Q));
    QObject::connect(quit, &QAction::triggered, qApp, &quitProgram);
    return quit;
}

}  // namespace

QMenuBar* makeMainMenu(const Texts& texts, QWidget* parent) {
    auto* bar = new QMenuBar(parent);
    const QString title = QString::fromStdString(texts.text("rootTembrixTitle"));
    bar->setObjectName(QStringLiteral("mainMenu"));
    bar->setAccessibleName(title);
    auto* menu = bar->addMenu(title);
    menu->setObjectName(QStringLiteral("rootTembrixTitle"));
    menu->addAction(makeQuitAction(texts, menu));
    return bar;
}

QuitKeys::QuitKeys(const Texts& texts) : texts_(texts) {
    qApp->installEventFilter(this);
}

bool QuitKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Show)
        return false;
    auto* window = qobject_cast<QWidget*>(watched);
    const bool takesKeys =
        window && (window->windowType() == Qt::Window || window->windowType() == Qt::Dialog);
    if (takesKeys && !window->findChild<QAction*>(quitName))
        window->addAction(makeQuitAction(texts_, window));
    return false;
}

void quitProgram() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QDialog*>(window); dialog && dialog->isVisible())
            dialog->reject();
    }
    // quit() would ask each window to close, which a running operation or an open editor refuses.
    QApplication::exit();
}

}  // namespace tembrix
