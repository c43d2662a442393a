#include "launcher/elffile.h"

#include <QFile>
#include <QtEndian>

#include <cstring>
#include <elf.h>
#include <link.h>

namespace Vantrel {

namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);

constexpr qint64 maximumPathLength = 4096;

constexpr unsigned char ownClass = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;
constexpr unsigned char ownData = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? ELFDATA2LSB : ELFDATA2MSB;

template <class Record>
bool readAt(QFile &file, quint64 position, Record *record)
{
    return position <= quint64(file.size()) && file.seek(qint64(position))
        && file.read(reinterpret_cast<char *>(record), sizeof *record) == qint64(sizeof *record);
}

QString machineName(quint16 machine, unsigned char wordClass)
{
    const struct
    {
        quint16 machine;
        const char *name;
    } names[] = {{EM_386, "x86"},           {EM_X86_64, "x86-64"}, {EM_ARM, "ARM"},
                 {EM_AARCH64, "ARM 64"},    {EM_RISCV, "RISC-V"},  {EM_PPC64, "PowerPC 64"},
                 {EM_S390, "IBM System Z"}, {EM_MIPS, "MIPS"}};
    QString text = QStringLiteral("machine %1").arg(machine);
    for (const auto &known : names) {
        if (known.machine == machine) {
            text = QString::fromLatin1(known.name);
        }
    }
    return text
        + (wordClass == ELFCLASS32 ? QLatin1String(", 32 bits") : QLatin1String(", 64 bits"));
}

quint16 ownMachine()
{
    static const quint16 machine = [] {
        QFile self(QStringLiteral("/proc/self/exe"));
        Header header;
        const bool isRead = self.open(QIODevice::ReadOnly) && readAt(self, 0, &header);
        return isRead ? quint16(header.e_machine) : quint16(EM_NONE);
    }();
    return machine;
}

QString interpreterOf(QFile &file, const Header &header)
{
    for (quint64 i = 0; i < header.e_phnum; ++i) {
        Segment segment;
        if (!readAt(file, header.e_phoff + i * header.e_phentsize, &segment)) {
            break;
        }
        if (segment.p_type == PT_INTERP && qint64(segment.p_filesz) <= maximumPathLength
            && segment.p_offset <= quint64(file.size()) && file.seek(qint64(segment.p_offset))) {
            const QByteArray path = file.read(qint64(segment.p_filesz));
            return QFile::decodeName(path.left(int(qstrnlen(path.constData(), uint(path.size())))));
        }
    }
    return {};
}

} // namespace

ElfFile ElfFile::read(const QString &fileName)
{
    ElfFile result;
    QFile file(fileName);
    Header header;
    if (!file.open(QIODevice::ReadOnly) || !readAt(file, 0, &header)
        || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return result;
    }
    result.isElf = true;
    const bool isOwnOrder = header.e_ident[EI_DATA] == ownData;
    const quint16 machine = isOwnOrder ? header.e_machine : qbswap(quint16(header.e_machine));
    result.machine = machineName(machine, header.e_ident[EI_CLASS]);
    result.isOfThisMachine =
        isOwnOrder && header.e_ident[EI_CLASS] == ownClass && machine == ownMachine();
    if (result.isOfThisMachine) {
        result.interpreter = interpreterOf(file, header);
    }
    return result;
}

} // namespace Vantrel
