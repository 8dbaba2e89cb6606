#include "app/accessible_tree.h"

#include <QApplication>
#include <QMetaEnum>
#include <QWidget>
#include <map>
#include <set>
#include <utility>

#include "app/widgets/announcements.h"

namespace tembrix {

namespace tree {

namespace {

using enum QAccessible::Role;

// What a user operates or reads by itself.
const std::set<QAccessible::Role> controls{
    Button,   ButtonMenu, ButtonDropDown, CheckBox,  RadioButton, EditableText, ComboBox, SpinBox,
    Slider,   List,       ListItem,       MenuItem,  HotkeyField, ProgressBar,  PageTab,  Tree,
    TreeItem, Table,      Link,           PopupMenu, Window,      Dialog,       Graphic};
// What has no action of its own.
const std::set<QAccessible::Role> still{List,   Tree,        Table,  PopupMenu,
                                        Window, ProgressBar, Dialog, Graphic};
// What names the controls in it.
const std::set<QAccessible::Role> groups{Grouping, List, PopupMenu, MenuItem, ComboBox, MenuBar};

bool isPartOf(Node node, const std::set<QAccessible::Role>& roles) {
    const Node parent = node->parent();
    return parent && roles.contains(parent->role());
}

QString described(Node node) {
    const QMetaEnum roles = QMetaEnum::fromType<QAccessible::Role>();
    QString text = QString::fromLatin1(roles.valueToKey(node->role())) + " “" + name(node) + "”";
    if (const QObject* object = node->object())
        text += " (" + QString::fromLatin1(object->metaObject()->className()) + " " +
                object->objectName() + ")";
    return text;
}

void collect(Node node, std::vector<Node>& found) {
    if (!node || !node->isValid() || node->state().invisible)
        return;
    found.push_back(node);
    for (int i = 0; i < node->childCount(); ++i)
        collect(node->child(i), found);
}

}  // namespace

QString name(Node node) {
    return node ? node->text(QAccessible::Name) : QString();
}
QString description(Node node) {
    return node ? node->text(QAccessible::Description) : QString();
}

std::vector<Node> all(Node top) {
    std::vector<Node> found;
    collect(top, found);
    return found;
}

Node find(Node top, QAccessible::Role role, const QString& wanted) {
    for (Node node : all(top))
        if (node->role() == role &&
            (name(node) == wanted || (role == Window && name(node).startsWith(wanted))))
            return node;
    return nullptr;
}

std::vector<Node> windows() {
    std::vector<Node> found;
    const Node program = QAccessible::queryAccessibleInterface(qApp);
    for (int i = 0; i < program->childCount(); ++i)
        if (const Node top = program->child(i); top && top->isValid() && !top->state().invisible)
            found.push_back(top);
    return found;
}

bool act(Node node, QString action) {
    auto* actions = node ? node->actionInterface() : nullptr;
    if (action.isEmpty())
        action = QAccessibleActionInterface::pressAction();
    if (!actions || node->state().disabled || !actions->actionNames().contains(action))
        return false;
    actions->doAction(action);
    QApplication::processEvents();
    return true;
}

bool choose(Node window, const QString& menu, const QString& entry) {
    for (Node title : all(window))
        if (title->role() == MenuItem && name(title) == menu && title->childCount() > 0) {
            const Node entries = title->child(0);
            for (int i = 0; entries && i < entries->childCount(); ++i)
                if (name(entries->child(i)) == entry)
                    return act(entries->child(i));
        }
    return false;
}

bool type(Node field, const QString& text) {
    if (!field || field->state().readOnly || field->state().disabled)
        return false;
    if (auto* editable = field->editableTextInterface())
        editable->replaceText(0, static_cast<int>(field->text(QAccessible::Value).size()), text);
    QApplication::processEvents();
    return field->text(QAccessible::Value) == text;
}

QStringList faults(Node window) {
    QStringList found;
    std::map<std::pair<Node, QString>, Node> known;
    for (Node node : all(window)) {
        const auto role = node->role();
        const auto state = node->state();
        // The toolkit's own parts of a field, a number or a list to choose from.
        if (isPartOf(node, {EditableText, SpinBox, ComboBox}) || isPartOf(node, {ScrollBar}))
            continue;
        if (role == NoRole || (role == Client && state.focusable) ||
            (role == Grouping && name(node).isEmpty()))
            found << "no role: " + described(node);
        if (!controls.contains(role))
            continue;
        if (name(node).isEmpty())
            found << "no name: " + described(node);
        auto* actions = node->actionInterface();
        const bool acts = (actions && !actions->actionNames().isEmpty()) || node->valueInterface();
        if (!still.contains(role) && !state.disabled && !acts)
            found << "no action: " + described(node);
        Node group = node->parent();
        while (group && group != window &&
               !(groups.contains(group->role()) && !name(group).isEmpty()))
            group = group->parent();
        if (const auto [twin, isNew] = known.try_emplace({group, name(node)}, node); !isNew)
            found << "two of one name: " + described(node) + " and " + described(twin->second);
    }
    return found;
}

}  // namespace tree

namespace {

std::vector<std::pair<QAccessible::Event, QString>>& announced() {
    static std::vector<std::pair<QAccessible::Event, QString>> all;
    return all;
}

}  // namespace

Announcements::Announcements() {
    announced().clear();
    listenToAnnouncements([](QAccessibleEvent& event) {
        announced().emplace_back(event.type(), tree::name(event.accessibleInterface()));
    });
}
Announcements::~Announcements() {
    listenToAnnouncements({});
}
bool Announcements::contains(QAccessible::Event type, const QString& name) const {
    for (const auto& [kind, from] : announced())
        if (kind == type && from == name)
            return true;
    return false;
}
void Announcements::clear() {
    announced().clear();
}

}  // namespace tembrix
