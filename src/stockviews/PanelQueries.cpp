#include "stockviews/PanelQueries.h"

void PanelQueries::noteQuery(const QString &code)
{
    m_underWay.insert(code);
    m_lastCode = code;
}

bool PanelQueries::takeIsOfStockLeft(const QString &answered, const QString &shown)
{
    if (!answered.isEmpty())
        return m_underWay.remove(answered) && answered != shown;
    return !m_underWay.remove(shown) && !m_underWay.isEmpty();
}
