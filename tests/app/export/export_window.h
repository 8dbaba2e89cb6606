#pragma once

#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <QWidget>

#include "app/app_project.h"
#include "app/export/export_controller.h"
#include "app/export/waiting_panel.h"
#include "app/window_tests.h"
#include "fakes/export_records.h"

namespace tembrix {

// A window with exports only, an open video and marks. Texts are keys, unless TEMBRIX_LANGUAGE
// specifies a language.
struct ExportWindow : MatchRecords {
    AppProject project;
    QWidget window;
    ExportController* exports = nullptr;

    ExportWindow() {
        loadTexts();
        project.openVideo();
        project.media.add(*project.player.currentVideoURL(), 100);
        project.useCollection("Match", library);
        project.timeline.replaceLines(
            {line("First", {stamp("pass", "Пас", 10, 15, {"long"}, {"half"}),
                            stamp("shot", "Shot", 40, 42)}),
             line("Second", {stamp("pass", "Пас", 2, 4, {"exact", "long"})})});
        project.timeline.selectLine((*project.timeline.lines)[1]->id);
        project.processes.behavior = [](const FakeProcessRunner::Call& call) {
            std::ofstream(call.arguments[1]) << "archive";
            return Result<ProcessOutcome>(ProcessOutcome{});
        };
        window.setObjectName("timelines");
        window.resize(1280, 430);
        exports = new ExportController(
            {project.timeline, project.tagLibrary, project.exports, project.focus, project.events,
             project.core.commands, project.panels, project.texts},
            &window);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void loadTexts() {
        const QString language = qEnvironmentVariable("TEMBRIX_LANGUAGE");
        QFile file(QString(TEMBRIX_RESOURCES "/texts/%1.json").arg(language));
        if (language.isEmpty() || !file.open(QIODevice::ReadOnly))
            return;
        const auto texts = QJsonDocument::fromJson(file.readAll()).object();
        for (auto text = texts.begin(); text != texts.end(); ++text)
            project.texts.set(text.key().toStdString(), text.value().toString().toStdString());
    }

    // The topmost sheet, once it is the active window.
    static QWidget* sheet() {
        QTest::qWait(1);  // deletes the closed sheet and shows the next one
        auto* top = QApplication::activeModalWidget();
        return top && QTest::qWaitForWindowActive(top) ? top : nullptr;
    }
    static QString title() { return sheet() ? sheet()->objectName() : QString("none"); }
    static QTreeWidget* rows() { return child<QTreeWidget>(*sheet(), "exportChoices"); }
    static void clickRow(int row, int column = 0) {
        auto* list = rows();
        const QRect at = list->visualItemRect(list->topLevelItem(row));
        const int x = column == 0 ? at.left() + 40 : list->columnViewportPosition(column) + 10;
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, {x, at.center().y()});
    }
    static QStringList rowTexts() {
        QStringList texts;
        for (int i = 0; i < rows()->topLevelItemCount(); ++i)
            if (!rows()->topLevelItem(i)->isHidden())
                texts << rows()->topLevelItem(i)->text(0);
        return texts;
    }
    static void press(const char* button) {
        QTest::mouseClick(child<QPushButton>(*sheet(), button), Qt::LeftButton);
    }
    static void key(Qt::Key key) {
        auto* sheetOnTop = sheet();  // waits until it is active
        auto* focused = QApplication::focusWidget();
        QTest::keyClick(focused ? focused : sheetOnTop, key);
    }

    WaitingPanel* waiting() { return child<WaitingPanel>(window, "waitingPanel"); }
    FakeMovieRenderer::Session& session(std::size_t index = 0) {
        return *project.renderer.sessions.at(index);
    }
};

}  // namespace tembrix
