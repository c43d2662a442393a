#include "contactmodel.h"

#include <QFont>

namespace {

QVector<Contact> sampleContacts()
{
    const QString family = ContactModel::tr("Family");
    const QString friends = ContactModel::tr("Friends");
    const QString work = ContactModel::tr("Work");
    return {
        {"Ada Winter", "030 555 0101", QDate(1984, 3, 12), family, true},
        {"Benjamin Osei", "040 555 0102", QDate(1979, 11, 2), work, false},
        {"Clara Lindqvist", "089 555 0103", QDate(1991, 6, 24), friends, false},
        {"David Moreau", "0221 555 0104", QDate(1988, 1, 30), friends, true},
        {"Elif Kaya", "069 555 0105", QDate(1995, 9, 17), work, false},
        {"Felix Brandt", "0711 555 0106", QDate(1968, 12, 5), family, false},
        {"Grace O'Neill", "0211 555 0107", QDate(1982, 8, 8), work, false},
        {"Hugo Silva", "0341 555 0108", QDate(2001, 2, 19), friends, false},
        {"Ines Novak", "0351 555 0109", QDate(1976, 5, 3), work, true},
        {"Jonas Weber", "0511 555 0110", QDate(1999, 10, 27), friends, false},
        {"Kiri Tanaka", "0911 555 0111", QDate(1990, 4, 14), work, false},
        {"Lena Fuchs", "0421 555 0112", QDate(2012, 7, 21), family, false},
    };
}

} // namespace

ContactModel::ContactModel(QObject *parent)
    : QAbstractTableModel(parent), m_contacts(sampleContacts())
{}

int ContactModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_contacts.size();
}

int ContactModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : NumColumns;
}

QVariant ContactModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Contact &contact = m_contacts.at(index.row());
    if (role == Qt::FontRole && contact.isFavourite && index.column() == Name) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (index.column()) {
    case Name:
        return contact.name;
    case Phone:
        return contact.phone;
    case Birthday:
        return contact.birthday;
    case Group:
        return contact.group;
    }
    return {};
}

QVariant ContactModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    const QString titles[NumColumns] = {tr("Name"), tr("Phone"), tr("Birthday"), tr("Group")};
    return section >= 0 && section < NumColumns ? titles[section] : QVariant();
}

void ContactModel::setContact(int row, const Contact &contact)
{
    m_contacts[row] = contact;
    emit dataChanged(index(row, 0), index(row, NumColumns - 1));
}

int ContactModel::addContact(const Contact &contact)
{
    const int row = m_contacts.size();
    beginInsertRows({}, row, row);
    m_contacts.append(contact);
    endInsertRows();
    return row;
}

void ContactModel::removeContact(int row)
{
    beginRemoveRows({}, row, row);
    m_contacts.remove(row);
    endRemoveRows();
}
