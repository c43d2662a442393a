#include "contactswindow.h"

#include "contactform.h"
#include "contactmodel.h"
#include "mapcanvas.h"

#include <QAction>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QTableView>
#include <QToolBar>

ContactsWindow::ContactsWindow(QWidget *parent)
    : QMainWindow(parent), m_model(new ContactModel(this)),
      m_sorted(new QSortFilterProxyModel(this)), m_tabs(new QTabWidget), m_count(new QLabel)
{
    setObjectName("contactsWindow");
    setWindowTitle(tr("Contacts"));
    m_sorted->setSourceModel(m_model);
    m_sorted->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_sorted->setFilterKeyColumn(-1);

    m_tabs->setObjectName("tabs");
    m_tabs->addTab(makeContactsPage(), tr("Contacts"));
    m_tabs->addTab(makeNotesPage(), tr("Notes"));
    m_tabs->addTab(makeMapPage(), tr("Map"));
    setCentralWidget(m_tabs);

    makeActions();
    makeMenus();
    makeToolBar();
    statusBar()->addPermanentWidget(m_count);

    // The sorted rows change before those of the model have, or without them.
    for (const QAbstractItemModel *model : {static_cast<QAbstractItemModel *>(m_sorted),
                                            static_cast<QAbstractItemModel *>(m_model)}) {
        connect(model, &QAbstractItemModel::rowsInserted, this, &ContactsWindow::showCount);
        connect(model, &QAbstractItemModel::rowsRemoved, this, &ContactsWindow::showCount);
    }
    showCount();
    selectRow(0);
    resize(920, 540);
}

ContactsWindow::~ContactsWindow() = default;

QWidget *ContactsWindow::makeContactsPage()
{
    auto *splitter = new QSplitter;
    splitter->addWidget(makeTable());
    splitter->addWidget(makeDetails());
    splitter->setStretchFactor(0, 1);
    splitter->setChildrenCollapsible(false);
    splitter->setContentsMargins(0, 6, 6, 6);
    return splitter;
}

QWidget *ContactsWindow::makeTable()
{
    m_table = new QTableView;
    m_table->setObjectName("contactTable");
    m_table->setModel(m_sorted);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setAlternatingRowColors(true);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(ContactModel::Name, Qt::AscendingOrder);
    m_table->setShowGrid(false);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(ContactModel::Name, QHeaderView::Stretch);
    m_table->resizeColumnsToContents();
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &ContactsWindow::showCurrent);
    connect(m_table, &QTableView::doubleClicked, this, &ContactsWindow::editContact);

    auto *search = new QLineEdit;
    search->setPlaceholderText(tr("Search"));
    search->setClearButtonEnabled(true);
    connect(search, &QLineEdit::textChanged, m_sorted,
            &QSortFilterProxyModel::setFilterFixedString);

    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(search);
    layout->addWidget(m_table);
    return page;
}

QWidget *ContactsWindow::makeDetails()
{
    m_form = new ContactForm;
    auto *save = new QPushButton(tr("&Save"));
    save->setObjectName("saveButton");
    save->setEnabled(false);
    connect(m_form, &ContactForm::completeChanged, save, &QPushButton::setEnabled);
    connect(save, &QPushButton::clicked, this, &ContactsWindow::saveForm);

    auto *details = new QGroupBox(tr("Details"));
    details->setObjectName("details");
    details->setMinimumWidth(270);
    auto *layout = new QVBoxLayout(details);
    layout->addWidget(m_form);
    layout->addWidget(save, 0, Qt::AlignRight);
    layout->addStretch();
    return details;
}

QWidget *ContactsWindow::makeNotesPage()
{
    auto *notes = new QPlainTextEdit;
    notes->setObjectName("notesEdit");
    notes->setPlaceholderText(tr("Notes"));
    notes->setPlainText(tr("Call Ada about the boat.\nBirthday card for Lena!"));
    return notes;
}

QWidget *ContactsWindow::makeMapPage()
{
    m_map = new MapCanvas;
    m_map->setObjectName("map");
    auto *zoom = new QLabel(tr("Zoom: %1").arg(m_map->zoom(), 0, 'f', 2));
    zoom->setObjectName("zoomLabel");
    auto *reset = new QPushButton(tr("Original size"));
    connect(m_map, &MapCanvas::zoomChanged, zoom,
            [zoom](double factor) { zoom->setText(tr("Zoom: %1").arg(factor, 0, 'f', 2)); });
    connect(reset, &QPushButton::clicked, m_map, [this] { m_map->setZoom(1); });

    auto *page = new QWidget;
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(zoom);
    bottom->addStretch();
    bottom->addWidget(reset);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(m_map, 1);
    layout->addLayout(bottom);
    return page;
}

void ContactsWindow::makeActions()
{
    m_new = new QAction(style()->standardIcon(QStyle::SP_FileIcon), tr("&New contact..."), this);
    m_new->setObjectName("newAction");
    m_new->setShortcut(QKeySequence::New);
    connect(m_new, &QAction::triggered, this, &ContactsWindow::newContact);
    m_edit = new QAction(style()->standardIcon(QStyle::SP_FileDialogDetailedView),
                         tr("&Edit contact..."), this);
    m_edit->setObjectName("editAction");
    m_edit->setShortcut(Qt::Key_F2);
    connect(m_edit, &QAction::triggered, this, &ContactsWindow::editContact);
    m_delete =
        new QAction(style()->standardIcon(QStyle::SP_TrashIcon), tr("&Delete contact"), this);
    m_delete->setObjectName("deleteAction");
    m_delete->setShortcut(QKeySequence("Ctrl+D"));
    connect(m_delete, &QAction::triggered, this, &ContactsWindow::deleteContact);
    m_quit = new QAction(tr("&Quit"), this);
    m_quit->setShortcut(QKeySequence("Ctrl+Q"));
    connect(m_quit, &QAction::triggered, this, &QWidget::close);
}

void ContactsWindow::makeMenus()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(m_new);
    file->addSeparator();
    file->addAction(m_quit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addActions({m_edit, m_delete});
    QMenu *view = menuBar()->addMenu(tr("&View"));
    makeColumnMenu(view->addMenu(tr("&Columns")));
    QAction *bar = view->addAction(tr("&Status bar"), statusBar(), &QWidget::setVisible);
    bar->setCheckable(true);
    bar->setChecked(true);
    QMenu *help = menuBar()->addMenu(tr("&Help"));
    help->setObjectName("helpMenu");
    help->addAction(tr("&About"), this, &ContactsWindow::showAbout);
}

void ContactsWindow::makeColumnMenu(QMenu *menu)
{
    // Without the name a row would tell nothing.
    for (int column = ContactModel::Name + 1; column < ContactModel::NumColumns; ++column) {
        QAction *action = menu->addAction(m_model->headerData(column, Qt::Horizontal).toString());
        action->setCheckable(true);
        action->setChecked(true);
        connect(action, &QAction::toggled, m_table,
                [this, column](bool isShown) { m_table->setColumnHidden(column, !isShown); });
    }
}

void ContactsWindow::makeToolBar()
{
    QToolBar *bar = addToolBar(tr("Main tool bar"));
    bar->setObjectName("toolBar");
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addActions({m_new, m_edit, m_delete});
}

int ContactsWindow::currentRow() const
{
    const QModelIndex index = m_sorted->mapToSource(m_table->currentIndex());
    return index.isValid() ? index.row() : -1;
}

void ContactsWindow::selectRow(int row)
{
    m_table->setCurrentIndex(m_sorted->mapFromSource(m_model->index(row, ContactModel::Name)));
}

void ContactsWindow::showCurrent()
{
    const int row = currentRow();
    const bool hasContact = row >= 0;
    m_form->setEnabled(hasContact);
    m_form->setContact(hasContact ? m_model->contact(row) : Contact());
    if (m_edit) {
        m_edit->setEnabled(hasContact);
        m_delete->setEnabled(hasContact);
    }
}

void ContactsWindow::showCount()
{
    m_count->setText(tr("%1 of %2 contacts").arg(m_sorted->rowCount()).arg(m_model->rowCount()));
}

void ContactsWindow::newContact()
{
    ContactDialog dialog(tr("New contact"), this);
    if (dialog.exec() == QDialog::Accepted) {
        selectRow(m_model->addContact(dialog.contact()));
        statusBar()->showMessage(tr("%1 was added").arg(dialog.contact().name), 5000);
    }
}

void ContactsWindow::editContact()
{
    const int row = currentRow();
    if (row < 0) {
        return;
    }
    ContactDialog dialog(tr("Edit contact"), this);
    dialog.setContact(m_model->contact(row));
    if (dialog.exec() == QDialog::Accepted) {
        m_model->setContact(row, dialog.contact());
        showCurrent();
    }
}

void ContactsWindow::deleteContact()
{
    const int row = currentRow();
    if (row < 0) {
        return;
    }
    const QString question = tr("Delete %1?").arg(m_model->contact(row).name);
    if (QMessageBox::question(this, tr("Delete contact"), question) == QMessageBox::Yes) {
        m_model->removeContact(row);
    }
}

void ContactsWindow::saveForm()
{
    const int row = currentRow();
    if (row >= 0) {
        m_model->setContact(row, m_form->contact());
        statusBar()->showMessage(tr("Saved"), 5000);
    }
}

void ContactsWindow::showAbout()
{
    QMessageBox::about(this, tr("About Contacts"), tr("An address book for twelve friends."));
}
