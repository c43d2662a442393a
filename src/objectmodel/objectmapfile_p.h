#ifndef VANTREL_OBJECTMAPFILE_P_H
#define VANTREL_OBJECTMAPFILE_P_H

#include <QString>
#include <QStringView>

namespace Vantrel {

/** Steps through the entries in the text of an object map, which must outlive it. */
class ObjectMapReader
{
public:
    explicit ObjectMapReader(const QString &text) : m_text(text) {}

    /** To the next line that is neither empty nor a comment; false at the end. */
    bool nextLine();

    /** Of the current line, counted from 1. */
    int lineNumber() const { return m_lineNumber; }
    /** Whether the line has the tab that makes it an entry. */
    bool isEntry() const { return m_tab != -1; }
    /** The two fields of an entry without their escapes. */
    QString symbolicName() const;
    QString realName() const;

private:
    const QString &m_text;
    QStringView m_line;
    qsizetype m_tab = -1;
    int m_next = 0;
    int m_lineNumber = 0;
};

/** Reads UTF-8 with or without a byte-order mark. False when the file cannot be read. */
bool readObjectMapFile(const QString &fileName, QString *text);

/** Writes UTF-8 by way of a file beside @p fileName where that is possible. */
bool writeObjectMapFile(const QString &fileName, const QString &text);

} // namespace Vantrel

#endif // VANTREL_OBJECTMAPFILE_P_H
