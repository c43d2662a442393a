#ifndef CONTACTSWINDOW_H
#define CONTACTSWINDOW_H

#include <QMainWindow>

class ContactForm;
class ContactModel;
class MapCanvas;
class QAction;
class QLabel;
class QMenu;
class QSortFilterProxyModel;
class QTabWidget;
class QTableView;

/** The main window of the address book. */
class ContactsWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit ContactsWindow(QWidget *parent = nullptr);
    ~ContactsWindow() override;

public slots:
    void newContact();
    void editContact();
    void deleteContact();
    void saveForm();
    void showAbout();

private:
    QWidget *makeContactsPage();
    QWidget *makeTable();
    QWidget *makeDetails();
    QWidget *makeNotesPage();
    QWidget *makeMapPage();
    void makeActions();
    void makeMenus();
    void makeColumnMenu(QMenu *menu);
    void makeToolBar();

    /** In the model; -1 when no contact is selected. */
    int currentRow() const;
    void selectRow(int row);
    void showCurrent();
    void showCount();

    ContactModel *m_model;
    QSortFilterProxyModel *m_sorted;
    QTabWidget *m_tabs;
    QTableView *m_table = nullptr;
    ContactForm *m_form = nullptr;
    MapCanvas *m_map = nullptr;
    QLabel *m_count;
    QAction *m_new = nullptr;
    QAction *m_edit = nullptr;
    QAction *m_delete = nullptr;
    QAction *m_quit = nullptr;
};

#endif // CONTACTSWINDOW_H
