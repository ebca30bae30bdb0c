#include "MainWindow.h"

#include "DictionaryModel.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/Variable.h>

#include <QAction>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSplitter>
#include <QStatusBar>
#include <QTableWidget>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

// The first file among what is dragged; empty when there is none.
QString localFile(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            return url.toLocalFile();
    }
    return {};
}

enum LabelColumn { CodeColumn, TextColumn, KindColumn, LabelColumnCount };

QString errorsOf(const DictionaryFile& file)
{
    QStringList texts;
    for (const DictionaryFileProblem& problem : file.problems) {
        if (problem.severity == DictionaryFileProblem::Severity::Error)
            texts += QStringList(problem.text) + problem.details;
    }
    return texts.join(QLatin1Char('\n'));
}

int passedOverIn(const DictionaryFile& file)
{
    const TCSProDataImport* importer = file.csproImporter();
    return importer ? importer->dictionary->problems().size() : 0;
}

QTableWidgetItem* labelCell(const QString& text, bool isItalic)
{
    auto* cell = new QTableWidgetItem(text);
    QFont font = cell->font();
    font.setItalic(isItalic);
    cell->setFont(font);
    return cell;
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_model(new DictionaryModel(this))
{
    m_visible.setSourceModel(m_model);
    m_visible.setRecursiveFilteringEnabled(true);
    m_visible.setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_visible.setFilterRole(DictionaryModel::SearchRole);
    createActions();
    createWidgets();
    setAcceptDrops(true);
    setWindowTitle(tr("Dictionary"));
    resize(1120, 600);
    statusBar()->showMessage(tr("Open a file, or drop one here."));
}

void MainWindow::createActions()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* open = file->addAction(tr("&Open..."), this, &MainWindow::chooseFile);
    open->setObjectName(QStringLiteral("open"));
    open->setShortcut(QKeySequence::Open);
    QAction* quit = file->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    m_asWritten = menuBar()->addMenu(tr("&Reading"))->addAction(tr("As &written"));
    m_asWritten->setObjectName(QStringLiteral("asWritten"));
    m_asWritten->setToolTip(tr("Read what a CSPro dictionary says; else by the established rules"));
    m_asWritten->setCheckable(true);
    m_asWritten->setChecked(true);
    connect(m_asWritten, &QAction::toggled, this, &MainWindow::readAgain);
}

void MainWindow::createWidgets()
{
    m_filter = new QLineEdit;
    m_filter->setObjectName(QStringLiteral("filter"));
    m_filter->setPlaceholderText(tr("Search names and labels"));
    m_filter->setClearButtonEnabled(true);
    m_filter->setAcceptDrops(false); // a file dropped here is for the window
    connect(m_filter, &QLineEdit::textChanged, this, &MainWindow::filter);
    createTree();

    auto* splitter = new QSplitter;
    splitter->addWidget(m_tree);
    splitter->addWidget(createLabels());
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({ 820, 300 });

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(m_filter);
    layout->addWidget(splitter, 1);
    setCentralWidget(central);
}

void MainWindow::createTree()
{
    m_tree = new QTreeView;
    m_tree->setObjectName(QStringLiteral("tree"));
    m_tree->setModel(&m_visible);
    m_tree->setUniformRowHeights(true);
    m_tree->setAlternatingRowColors(true);
    QHeaderView& header = *m_tree->header();
    header.setStretchLastSection(false);
    header.resizeSection(DictionaryModel::NameColumn, 250);
    header.setSectionResizeMode(DictionaryModel::LabelColumn, QHeaderView::Stretch);
    for (int column = DictionaryModel::TypeColumn; column < DictionaryModel::ColumnCount; ++column)
        header.resizeSection(column, 72);
    header.resizeSection(DictionaryModel::TypeColumn, 90);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
        &MainWindow::showLabels);
}

QWidget* MainWindow::createLabels()
{
    m_labelsTitle = new QLabel(tr("Value labels"));
    m_labelsTitle->setObjectName(QStringLiteral("labelsTitle"));
    m_labelsTitle->setTextFormat(Qt::PlainText);
    m_labelsTitle->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_labels = new QTableWidget(0, LabelColumnCount);
    m_labels->setObjectName(QStringLiteral("valueLabels"));
    m_labels->setHorizontalHeaderLabels({ tr("Code"), tr("Label"), tr("Kind") });
    m_labels->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_labels->verticalHeader()->hide();
    m_labels->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_labels->horizontalHeader()->setSectionResizeMode(TextColumn, QHeaderView::Stretch);
    m_labels->horizontalHeader()->setSectionResizeMode(KindColumn, QHeaderView::ResizeToContents);
    m_labels->setColumnWidth(CodeColumn, 70);
    m_labels->setColumnHidden(KindColumn, true);

    auto* panel = new QWidget;
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_labelsTitle);
    layout->addWidget(m_labels);
    return panel;
}

bool MainWindow::openPath(const QString& path)
{
    DictionaryFileOptions options;
    options.reading =
        m_asWritten->isChecked() ? CSProReading::AsWritten : CSProReading::Established;
    const DictionaryFile file = readDictionaryFile(path, options);
    if (file.hasDictionary())
        showFile(file);
    const QString errors = errorsOf(file);
    if (!errors.isEmpty())
        tellProblem(path, errors);
    return file.hasDictionary();
}

void MainWindow::showFile(const DictionaryFile& file)
{
    DictionaryPointer tree = file.buildTree();
    m_kinds = codeKinds(file, *tree->getRoot());
    m_model->setDictionary(std::move(tree));
    m_path = file.path;
    m_tree->expandAll();
    showLabels({});
    setWindowTitle(tr("%1 - Dictionary").arg(QFileInfo(m_path).fileName()));
    QString message =
        tr("%1 entities, %2 variables").arg(m_model->entityCount()).arg(m_model->variableCount());
    const int passedOver = passedOverIn(file);
    if (passedOver > 0)
        message += tr("; not read as written: %1 places").arg(passedOver);
    statusBar()->showMessage(message);
}

void MainWindow::tellProblem(const QString& path, const QString& problem)
{
    QMessageBox box(QMessageBox::Warning, tr("Dictionary"),
        QDir::toNativeSeparators(path) + QLatin1Char('\n') + problem, QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

void MainWindow::chooseFile()
{
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open a dictionary"), QFileInfo(m_path).path(),
            tr("Dictionaries and data files (*.dcf *.sav *.zsav *.dta);;All files (*)"));
    if (!path.isEmpty())
        openPath(path);
}

// The action always says how the dictionary that is shown was read.
void MainWindow::readAgain()
{
    if (m_path.isEmpty() || openPath(m_path))
        return;
    const QSignalBlocker blocker(m_asWritten);
    m_asWritten->toggle();
}

// The rows are set anew: taking thousands away one by one, among those that stay, would take
// minutes. The header would forget its widths over that.
void MainWindow::filter(const QString& text)
{
    const QModelIndex current = m_visible.mapToSource(m_tree->currentIndex());
    const QByteArray widths = m_tree->header()->saveState();
    m_visible.setSourceModel(nullptr);
    m_visible.setFilterFixedString(text);
    m_visible.setSourceModel(m_model);
    m_tree->header()->restoreState(widths);
    m_tree->expandAll();
    m_tree->setCurrentIndex(m_visible.mapFromSource(current));
    showLabels(m_tree->currentIndex());
}

void MainWindow::showLabels(const QModelIndex& index)
{
    const TOxVariable* variable = m_model->variable(m_visible.mapToSource(index));
    m_labelsTitle->setText(
        variable ? tr("Value labels of %1").arg(variable->getName()) : tr("Value labels"));
    m_labels->setRowCount(0);
    if (!variable)
        return;
    const QList<ValueLabelElement*>& labels = *variable->getValueLabelElementList();
    m_labels->setRowCount(labels.size());
    const auto kindOf = m_kinds.value(variable);
    bool hasKinds = false;
    for (int row = 0; row < labels.size(); ++row) {
        const ValueLabelElement& label = *labels.at(row);
        const QString kind = kindOf ? kindOf(row) : QString();
        hasKinds = hasKinds || !kind.isEmpty();
        const QStringList cells { label.getValue(), label.getLabel(), kind };
        for (int column = 0; column < cells.size(); ++column)
            m_labels->setItem(row, column, labelCell(cells.at(column), !kind.isEmpty()));
    }
    m_labels->setColumnHidden(KindColumn, !hasKinds);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFile(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

// The program that the file comes from waits for this to return, so the file is opened after it.
void MainWindow::dropEvent(QDropEvent* event)
{
    const QString path = localFile(*event->mimeData());
    if (path.isEmpty())
        return;
    event->acceptProposedAction();
    QTimer::singleShot(0, this, [this, path] { openPath(path); });
}
