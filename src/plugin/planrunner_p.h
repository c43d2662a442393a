#ifndef VANTREL_PLANRUNNER_P_H
#define VANTREL_PLANRUNNER_P_H

#include "plugin/plan.h"
#include "plugin/readiness_p.h"

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>

namespace Vantrel {

/**
 * Carries out the plan in the application and ends it. A plan that fails, also
 * because the application ends before it is done, is told in one line on
 * standard error, and then the process ends with the code of the failure
 * whatever the application returns.
 */
class PlanRunner : public QObject
{
    Q_OBJECT

public:
    /** A plan with @p error fails as soon as events are served. */
    PlanRunner(const Plan &plan, const QString &error, QObject *parent);
    ~PlanRunner() override;

private:
    struct Failure
    {
        int code = 0; ///< 0 when it is none
        QString text;
    };

    bool takePlan();
    void tell(const QString &line);
    void begin();
    void install();
    void nextStep();
    Failure doStep(const Plan::Step &step);
    Failure dumpTo(const Plan::Step &step);
    Failure pictureTo(const Plan::Step &step);
    Failure find(const Plan::Step &step);
    Failure startLibrary(const Plan::Step &step);
    void libraryEnded(const QString &library, int result, const QString &error);
    void letScriptReturn();
    void finish(const Failure &failure);
    void conclude(const Failure &failure);
    void endApplication();
    void applicationEnds();

    Plan m_plan;
    Failure m_invalid;
    Readiness m_readiness;
    QTimer m_ending;
    QElapsedTimer m_sinceEnd;
    QFile m_status;
    std::size_t m_next = 0;
    QString m_doing;
    bool m_isTaken = true;
    bool m_isOver = false;
    bool m_isInLibrary = false;
};

} // namespace Vantrel

#endif // VANTREL_PLANRUNNER_P_H
