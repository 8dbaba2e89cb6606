#pragma once

#include <QAccessible>
#include <QString>
#include <QStringList>
#include <vector>

namespace tembrix {

// The program as screen readers see it: everything goes through the accessible tree.
namespace tree {

using Node = QAccessibleInterface*;  // null for nothing

QString name(Node node);
QString description(Node node);

// The node and all that is visible below it.
std::vector<Node> all(Node top);
// The first visible node below `top` that has this role and name. The name of a window may go on
// after it.
Node find(Node top, QAccessible::Role role, const QString& name);
// The visible windows and sheets of the program.
std::vector<Node> windows();

// Runs an action, which has to be offered. Without a name the node is pressed.
bool act(Node node, QString action = {});
// Chooses an entry of a menu bar.
bool choose(Node window, const QString& menu, const QString& entry);
// Replaces the text of a field.
bool type(Node field, const QString& text);

// What is wrong with the nodes of a window: a control without role, name or action, or two of one
// name in the same group.
QStringList faults(Node window);

}  // namespace tree

// Records what is announced while it lives.
class Announcements {
  public:
    Announcements();
    ~Announcements();

    bool contains(QAccessible::Event type, const QString& name) const;
    void clear();
};

}  // namespace tembrix
