#pragma once

#include "CodeKinds.h"

#include <QMainWindow>
#include <QSortFilterProxyModel>
#include <QString>

class DictionaryModel;
struct DictionaryFile;
class QAction;
class QLabel;
class QLineEdit;
class QTableWidget;
class QTreeView;

/*! Shows one dictionary: its tree, a filter, and the value labels of the selected variable. */
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);

    /*!
     * Shows the dictionary of \a path. What went wrong is told in a message box; false, and all
     * stays as it was, when there is nothing to show.
     */
    bool openPath(const QString& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void createActions();
    void createWidgets();
    void createTree();
    QWidget* createLabels();
    void chooseFile();
    void readAgain();
    void filter(const QString& text);
    void showLabels(const QModelIndex& index);
    void showFile(const DictionaryFile& file);
    void tellProblem(const QString& path, const QString& problem);

    DictionaryModel* m_model;
    QSortFilterProxyModel m_visible;
    QAction* m_asWritten = nullptr;
    QLineEdit* m_filter = nullptr;
    QTreeView* m_tree = nullptr;
    QLabel* m_labelsTitle = nullptr;
    QTableWidget* m_labels = nullptr;
    CodeKinds m_kinds; // of the dictionary that is shown
    QString m_path; // of the dictionary that is shown; empty before
};
