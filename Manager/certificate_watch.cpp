#include "certificate_watch.h"

namespace {

constexpr int mostPolls = 41;

}

void CertificateWatch::begin(int windowCount, int page, QWidget *button)
{
    mark = windowCount;
    pageOfClick = page;
    clicked = button;
    polls = 0;
}

bool CertificateWatch::hasCome(int windowCount)
{
    if (windowCount < mark && windowCount >= 0)
        mark = windowCount;
    return windowCount > mark;
}

bool CertificateWatch::mayTryAgain()
{
    return polls++ < mostPolls;
}
