#include "KRCheckListDropPlaceholderContentView.h"

KRCheckListDropPlaceholderContentView::KRCheckListDropPlaceholderContentView(KRRect frame) : KRView(frame) {}

KRCheckListDropPlaceholderContentView::~KRCheckListDropPlaceholderContentView() = default;
