#ifndef VANTREL_WINDOWINTERACTION_P_H
#define VANTREL_WINDOWINTERACTION_P_H

namespace Vantrel {

class GlobalClass;

/** Adds the window functions to @p global; the classes of their arguments must be there. */
void registerWindowFunctions(GlobalClass *global);

} // namespace Vantrel

#endif // VANTREL_WINDOWINTERACTION_P_H
