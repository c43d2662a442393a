#ifndef CONTACTFORM_H
#define CONTACTFORM_H

#include "contactmodel.h"

#include <QDialog>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;

/** The fields of one contact. */
class ContactForm : public QWidget
{
    Q_OBJECT

public:
    explicit ContactForm(QWidget *parent = nullptr);

    Contact contact() const;
    void setContact(const Contact &contact);
    bool isComplete() const;

signals:
    void completeChanged(bool isComplete);

private:
    QLineEdit *m_name;
    QLineEdit *m_phone;
    QDateEdit *m_birthday;
    QComboBox *m_group;
    QCheckBox *m_favourite;
};

/** Asks for a contact; cannot be accepted without a name. */
class ContactDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ContactDialog(const QString &title, QWidget *parent = nullptr);

    Contact contact() const { return m_form->contact(); }
    void setContact(const Contact &contact) { m_form->setContact(contact); }

private:
    ContactForm *m_form;
};

#endif // CONTACTFORM_H
