#ifndef CONTACTMODEL_H
#define CONTACTMODEL_H

#include <QAbstractTableModel>
#include <QDate>
#include <QString>
#include <QVector>

struct Contact
{
    QString name;
    QString phone;
    QDate birthday;
    QString group;
    bool isFavourite = false;
};

/** The contacts, one in each row. */
class ContactModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Name, Phone, Birthday, Group, NumColumns };

    explicit ContactModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    const Contact &contact(int row) const { return m_contacts.at(row); }
    void setContact(int row, const Contact &contact);
    /** @return the row of the new contact. */
    int addContact(const Contact &contact);
    void removeContact(int row);

private:
    QVector<Contact> m_contacts;
};

#endif // CONTACTMODEL_H
