#pragma once
#include <QList>
#include <QMap>
#include <QString>

class QTreeWidget;

// The file types the wizard knows: the tree of check boxes on the options page
// and the icon of each found file come from this one table.
class FileTypeCatalogue {
public:
    struct Row {
        const char* description;
        const char* extensions; // leading dots, several joined by ";"
        const char* maxSize;    // MB, shown only; empty when unknown
        int icon;               // number of the file in ":./icons"
        const char* extraKeys;  // further iconMap keys, ";"-joined, or empty
    };
    struct Category {
        const char* name;
        QList<Row> rows;
    };

    static const QList<Category>& categories();
    static QString iconPath(int number);

    // One key per extension (and extra key) of every row, in table order, so a
    // later row wins over an earlier one with the same extension.
    static void fillIconMap(QMap<QString, QString>& iconMap);

    // Adds one bold top-level item per category and one row item below it per
    // type, all checked. The tree's columns are the caller's to set.
    static void addToTree(QTreeWidget* tree);
};
