#include "KRCheckListItemView.h"
#include "KRCheckListDefaults.h"
#include "Controls/KRDefaults.h"
#include <malloc.h>
#include <gtest/gtest.h>
#include <cstdio>
namespace {
double inUse() { return double(mallinfo2().uordblks); }
template <class F> void measure(const char* name, F make) {
    constexpr int n = 2000;
    std::vector<decltype(make())> keep; keep.reserve(n);
    const double before = inUse();
    for (int i = 0; i < n; ++i) keep.push_back(make());
    std::printf("%-40s %8.1f bytes each\n", name, (inUse() - before) / n);
}
}
TEST(Scratch, Memory) {
    measure("KRView", [] { return std::make_shared<KRView>(); });
    measure("KRView+identifier", [] { auto v = std::make_shared<KRView>(); v->setIdentifier("shapeView"); return v; });
    measure("KRButtonView", [] { return std::make_shared<KRButtonView>(); });
    measure("KRTextField", [] { return std::make_shared<KRTextField>(); });
    measure("TitleTextField", [] { return std::make_shared<KRCheckListItemTitleTextField>(); });
    measure("QFont from defaults", [] { return std::make_shared<QFont>(KRCheckListDefaults::font()); });
    measure("Row bare", [] { return std::make_shared<KRCheckListItemView>(); });
    measure("Row updated", [] { auto r = std::make_shared<KRCheckListItemView>(); r->setStatus(1); return r; });
    measure("Row updated+laid out", [] { auto r = std::make_shared<KRCheckListItemView>(KRRect{0,0,400,28}); r->setStatus(1); r->layoutIfNeeded(); return r; });
    std::printf("sizeof row %zu button %zu field %zu cell %zu view %zu attrs %zu\n", sizeof(KRCheckListItemView), sizeof(KRButtonView), sizeof(KRCheckListItemTitleTextField), sizeof(KRCheckListItemTitleTextFieldCell), sizeof(KRView), sizeof(KRTextAttributes));
}
