#include "browser/ListingListView.h"

#include "browser/ListingRows.h"

ListingListView::ListingListView(wxWindow* parent, int id, const wxPoint& pos,
                                 const wxSize& size, long style, const ListingRows* rows)
    : wxListCtrl(parent, id, pos, size, style), m_rows(rows) {}

void ListingListView::ReloadRows() {
  DeleteAllItems();
  if (IsVirtualView() && m_rows) SetItemCount(m_rows->Count());
  Refresh();
}

long ListingListView::FirstSelected() const {
  return GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
}

wxString ListingListView::OnGetItemText(long item, long column) const {
  return m_rows ? m_rows->Text(item, static_cast<int>(column)) : wxString();
}

int ListingListView::OnGetItemImage(long item) const {
  return m_rows ? m_rows->Image(item) : -1;
}
