#include "contactform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

ContactForm::ContactForm(QWidget *parent)
    : QWidget(parent), m_name(new QLineEdit), m_phone(new QLineEdit), m_birthday(new QDateEdit),
      m_group(new QComboBox), m_favourite(new QCheckBox(tr("&Favourite")))
{
    m_name->setObjectName("nameEdit");
    m_name->setPlaceholderText(tr("First and last name"));
    m_phone->setObjectName("phoneEdit");
    m_phone->setInputMethodHints(Qt::ImhDialableCharactersOnly);
    m_birthday->setObjectName("birthdayEdit");
    m_birthday->setCalendarPopup(true);
    m_birthday->setDisplayFormat("yyyy-MM-dd");
    m_birthday->setDate(QDate(1990, 1, 1));
    m_birthday->setMaximumDate(QDate::currentDate());
    m_group->addItems({tr("Family"), tr("Friends"), tr("Work")});

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("&Name:"), m_name);
    layout->addRow(tr("&Phone:"), m_phone);
    layout->addRow(tr("&Birthday:"), m_birthday);
    layout->addRow(tr("&Group:"), m_group);
    layout->addRow(m_favourite);

    connect(m_name, &QLineEdit::textChanged, this, [this] { emit completeChanged(isComplete()); });
}

Contact ContactForm::contact() const
{
    return {m_name->text().trimmed(), m_phone->text().trimmed(), m_birthday->date(),
            m_group->currentText(), m_favourite->isChecked()};
}

void ContactForm::setContact(const Contact &contact)
{
    m_name->setText(contact.name);
    m_phone->setText(contact.phone);
    m_birthday->setDate(contact.birthday);
    m_group->setCurrentText(contact.group);
    m_favourite->setChecked(contact.isFavourite);
}

bool ContactForm::isComplete() const
{
    return !m_name->text().trimmed().isEmpty();
}

ContactDialog::ContactDialog(const QString &title, QWidget *parent)
    : QDialog(parent), m_form(new ContactForm)
{
    setObjectName("contactDialog");
    setWindowTitle(title);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton *ok = buttons->button(QDialogButtonBox::Ok);
    ok->setEnabled(false);
    connect(m_form, &ContactForm::completeChanged, ok, &QPushButton::setEnabled);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_form);
    layout->addWidget(buttons);
    setMinimumWidth(340);
}
