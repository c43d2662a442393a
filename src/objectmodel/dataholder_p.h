#ifndef VANTREL_DATAHOLDER_P_H
#define VANTREL_DATAHOLDER_P_H

#include "objectmodel/members.h"
#include "objectmodel/shared.h"

#include <vector>

namespace Vantrel {

/**
 * Keeps native data for all the handles that see it, or a part of it.
 *
 * A handle alone needs none: it frees its data itself, if it owns it. The
 * holder comes with the second handle. A handle that owns the data leaves it
 * to the holder when it goes or turns to other data, and the last handle to
 * let go of the holder ends both.
 */
class DataHolder final : public Shared
{
public:
    /**
     * @p c and @p attribute are those of the handle that has @p data. @p kept
     * (may be null) is what that handle looks into.
     */
    DataHolder(void *data, const Class *c, const ObjectAttribute &attribute,
               const SharedPtr<DataHolder> &kept);
    /** Of no data of its own: keeps both, for what looks into either. */
    DataHolder(const SharedPtr<DataHolder> &first, const SharedPtr<DataHolder> &second);
    ~DataHolder() override;

    void *data() const { return m_data; }
    /** Whether @p other lives as long as this one; a long chain is not looked through. */
    bool keeps(const DataHolder *other) const;
    /** A handle with the data was retyped to @p c: the data is one of it, if it knows its type. */
    void setMadeAs(const Class *c);
    /**
     * From now on the data is freed with this holder: as what it was made as,
     * where a class knows that, else by @p c.
     */
    void takeOver(const Class *c) { m_freedBy = m_madeAs ? m_madeAs : c; }
    /** The data is gone already. */
    void disown() { m_freedBy = nullptr; }

private:
    void *const m_data;
    const ObjectAttribute m_attribute;
    /** Knows the native type of the data; may be null. */
    const Class *m_madeAs = nullptr;
    const Class *m_freedBy = nullptr;
    std::vector<SharedPtr<DataHolder>> m_kept;
};

} // namespace Vantrel

#endif // VANTREL_DATAHOLDER_P_H
