#include "app/shell/main_menu.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>

#include "ports/texts.h"

namespace tembrix {

namespace {

QAction* makeQuitAction(const Texts& texts, QObject* parent) {
    auto* quit = new QAction(QString::fromStdString(texts.text("macQuitAppTitle")), parent);
    quit->setObjectName(QStringLiteral("macQuitAppTitle"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
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

void addQuitKey(const Texts& texts, QWidget* window) {
    window->addAction(makeQuitAction(texts, window));
}

void quitProgram() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QDialog*>(window))
            dialog->reject();
    }
    QApplication::quit();
}

}  // namespace tembrix
