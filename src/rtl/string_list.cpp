#include "quorda/rtl/strings.h"

#include <algorithm>
#include <memory>
#include <numeric>

namespace quorda {

TStringList::~TStringList() {
    for (TStringItem* item : FList) {
        if (FOwnsObjects) {
            delete item->FObject;
        }
        delete item;
    }
}

void TStringList::CheckIndex(int Index) const {
    if (Index < 0 || Index >= Count()) {
        Error(SListIndexError, Index);
    }
}

std::string TStringList::Get(int Index) const {
    CheckIndex(Index);
    return Item(Index).FString;
}

void TStringList::Put(int Index, const std::string& S) {
    if (FSorted) {
        Error(SSortedListError, 0);
    }
    CheckIndex(Index);
    Changing();
    Item(Index).FString = S;
    Changed();
}

TObject* TStringList::GetObject(int Index) const {
    CheckIndex(Index);
    return Item(Index).FObject;
}

void TStringList::PutObject(int Index, TObject* AObject) {
    CheckIndex(Index);
    Changing();
    Item(Index).FObject = AObject;
    Changed();
}

int TStringList::Add(const std::string& S) {
    return AddObject(S, nullptr);
}

int TStringList::AddObject(const std::string& S, TObject* AObject) {
    int index = Count();
    if (FSorted && Find(S, index)) {
        switch (FDuplicates) {
        case dupIgnore:
            return index;
        case dupError:
            Error(SDuplicateString, 0);
        case dupAccept:
            break;
        }
    }
    InsertItem(index, S, AObject);
    return index;
}

void TStringList::Insert(int Index, const std::string& S) {
    if (FSorted) {
        Error(SSortedListError, 0);
    }
    if (Index < 0 || Index > Count()) {
        Error(SListIndexError, Index);
    }
    InsertItem(Index, S, nullptr);
}

void TStringList::InsertItem(int Index, const std::string& S, TObject* AObject) {
    Changing();
    auto item = std::make_unique<TStringItem>(TStringItem{S, AObject});
    FList.insert(FList.begin() + Index, item.get());
    item.release();
    Changed();
}

void TStringList::Delete(int Index) {
    CheckIndex(Index);
    Changing();
    std::unique_ptr<TStringItem> item(FList[static_cast<std::size_t>(Index)]);
    FList.erase(FList.begin() + Index);
    if (FOwnsObjects) {
        delete item->FObject;
    }
    Changed();
}

void TStringList::Clear() {
    if (FList.empty()) {
        return;
    }
    Changing();
    std::vector<TStringItem*> old;
    old.swap(FList);
    for (TStringItem* item : old) {
        if (FOwnsObjects) {
            delete item->FObject;
        }
        delete item;
    }
    Changed();
}

void TStringList::Exchange(int Index1, int Index2) {
    CheckIndex(Index1);
    CheckIndex(Index2);
    Changing();
    ExchangeItems(Index1, Index2);
    Changed();
}

void TStringList::ExchangeItems(int Index1, int Index2) {
    std::swap(FList[static_cast<std::size_t>(Index1)], FList[static_cast<std::size_t>(Index2)]);
}

void TStringList::Move(int CurIndex, int NewIndex) {
    if (CurIndex == NewIndex) {
        return;
    }
    // Checked before anything moves: a sorted list must not lose the item on the way.
    if (FSorted) {
        Error(SSortedListError, 0);
    }
    CheckIndex(CurIndex);
    CheckIndex(NewIndex);
    Changing();
    auto first = FList.begin();
    if (CurIndex < NewIndex) {
        std::rotate(first + CurIndex, first + CurIndex + 1, first + NewIndex + 1);
    } else {
        std::rotate(first + NewIndex, first + CurIndex, first + CurIndex + 1);
    }
    Changed();
}

int TStringList::IndexOf(std::string_view S) const {
    if (!FSorted) {
        // The items directly: TStrings::IndexOf would copy every line through Get.
        for (int i = 0; i < Count(); ++i) {
            if (CompareStrings(Item(i).FString, S) == 0) {
                return i;
            }
        }
        return -1;
    }
    int index = 0;
    return Find(S, index) ? index : -1;
}

bool TStringList::Find(std::string_view S, int& Index) const {
    // Lower bound: with duplicates the first equal item is found.
    int low = 0;
    int high = Count();
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (CompareStrings(Item(middle).FString, S) < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    Index = low;
    return low < Count() && CompareStrings(Item(low).FString, S) == 0;
}

void TStringList::Sort() {
    CustomSort([](TStringList* List, int Index1, int Index2) {
        return List->CompareStrings(List->Item(Index1).FString, List->Item(Index2).FString);
    });
}

void TStringList::CustomSort(const TStringListSortCompare& Compare) {
    if (Count() < 2) {
        return;
    }
    Changing();
    // The compare function reads the list by index, so the list stays untouched while the order is
    // worked out and is permuted once at the end.
    std::vector<int> order(FList.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return Compare(this, a, b) < 0; });
    std::vector<TStringItem*> sorted;
    sorted.reserve(FList.size());
    for (int index : order) {
        sorted.push_back(FList[static_cast<std::size_t>(index)]);
    }
    FList.swap(sorted);
    Changed();
}

void TStringList::SetSorted(bool Value) {
    if (FSorted != Value) {
        if (Value) {
            Sort();
        }
        FSorted = Value;
    }
}

void TStringList::SetCaseSensitive(bool Value) {
    if (Value != CaseSensitive()) {
        TStrings::SetCaseSensitive(Value);
        if (FSorted) {
            Sort();
        }
    }
}

void TStringList::SetUpdateState(bool Updating) {
    if (Updating) {
        Changing();
    } else {
        Changed();
    }
}

void TStringList::Changing() {
    if (UpdateCount() == 0 && OnChanging) {
        OnChanging(this);
    }
}

void TStringList::Changed() {
    if (UpdateCount() == 0 && OnChange) {
        OnChange(this);
    }
}

} // namespace quorda
