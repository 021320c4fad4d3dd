#include "KRCheckListDraggingSession.h"

#include "KRCheckListItemView.h"

KRCheckListDraggingSession::KRCheckListDraggingSession() = default;

KRCheckListDraggingSession::~KRCheckListDraggingSession() = default;
