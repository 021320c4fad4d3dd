#pragma once

// KRCheckListKit: the check-list control. Include this header to use the list: KRCheckListView, its data
// source and delegate protocols, and KRCheckListItemsAsJSONPasteboardType, the pasteboard type of copied
// items.
#include "KRCheckListView.h"
#include "KRCheckListViewDataSource.h"
#include "KRCheckListViewDelegate.h"
