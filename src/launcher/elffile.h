#ifndef VANTREL_ELFFILE_H
#define VANTREL_ELFFILE_H

#include <QByteArray>
#include <QString>

namespace Vantrel {

/** What the headers of a program file tell. Only files of this machine's word size and byte order
 * are read further than to the machine. */
struct ElfFile
{
    bool isElf = false;
    bool isOfThisMachine = false;
    /** For people, such as "x86-64". */
    QString machine;
    /** The dynamic loader; empty in statically linked programs and in libraries. */
    QString interpreter;

    /** Files that are no ELF files, or cut short, give no error but say so little. */
    static ElfFile read(const QString &fileName);
};

} // namespace Vantrel

#endif // VANTREL_ELFFILE_H
