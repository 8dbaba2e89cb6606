#include "app/commands/command_button.h"

#include <QAbstractButton>
#include <QToolButton>
#include <memory>
#include <vector>

#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/translated.h"

namespace tembrix {

QString commandHelp(const Commands& commands, Command command, const Texts& texts) {
    const auto key = commands.keys().caption(command);
    const QString name = qtext(commands.name(command, texts));
    return key.empty() ? name : name + " (" + qtext(key) + ")";
}

void bindButton(QAbstractButton* button, Commands& commands, Command command, const Texts& texts) {
    QObject::connect(button, &QAbstractButton::clicked, button,
                     [&commands, command] { commands.run(command); });
    const auto show = [button, &commands, &texts, command] {
        setUsable(button, commands.isEnabled(command));
        if (const auto checked = commands.isChecked(command))
            button->setChecked(*checked);
    };
    const auto showKey = [button, &commands, &texts, command] {
        button->setToolTip(commandHelp(commands, command, texts));
        tellKey(button, qtext(commands.keys().caption(command)));
    };
    show();
    followLanguage(button, texts, showKey);
    auto subscriptions = std::make_shared<std::vector<Subscription>>();
    subscriptions->push_back(commands.changed.observe(show));
    subscriptions->push_back(commands.captionsChanged.observe(showKey));
    QObject::connect(button, &QObject::destroyed, [subscriptions] { subscriptions->clear(); });
}

QToolButton* makeCommandButton(Commands& commands, Command command, const Texts& texts,
                               const QString& icon, QWidget* parent) {
    QToolButton* button = makeIconButton(texts, commandRow(command).textKey, icon, parent);
    bindButton(button, commands, command, texts);
    return button;
}

}  // namespace tembrix
