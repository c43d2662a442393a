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
    /** @p c is the class of the handle that has @p data. */
    DataHolder(void *data, const Class *c);
    /** Of no data of its own: keeps both, for what looks into either. */
    DataHolder(SharedPtr<DataHolder> first, SharedPtr<DataHolder> second);
    ~DataHolder() override;

    void *data() const { return m_data; }
    /**
     * From now on the data is freed with this holder: as what it was made as,
     * where a class knows that, else by @p c.
     */
    void takeOver(const Class *c, const ObjectAttribute &attribute);
    /** The data is gone already. */
    void disown() { m_freedBy = nullptr; }

private:
    void *const m_data;
    /** Knows the native type of the data; may be null. */
    const Class *const m_madeAs;
    const Class *m_freedBy = nullptr;
    ObjectAttribute m_attribute;
    std::vector<SharedPtr<DataHolder>> m_kept;
};

} // namespace Vantrel

#endif // VANTREL_DATAHOLDER_P_H
