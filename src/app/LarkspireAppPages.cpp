// The pages of LarkspireApp beside the live list, and what leads to them.

#include "app/LarkspireApp.h"

void LarkspireApp::onTabChanged(int index)
{
    // Nothing yet: the pages refresh when they come to the front.
    Q_UNUSED(index)
}

void LarkspireApp::onSearchStockNameRequested(const QString &stockName)
{
    // Nothing yet: leads to a search for the stock's name.
    Q_UNUSED(stockName)
}

// The next three are connected and empty on purpose.

void LarkspireApp::onSearchTextChanged(const QString &text)
{
    Q_UNUSED(text)
}

void LarkspireApp::onStockAnalysisTabChanged() {}

void LarkspireApp::onStockCodeChanged(const QString &code)
{
    Q_UNUSED(code)
}
