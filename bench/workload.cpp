#include "workload.h"

#include <algorithm>
#include <tuple>

namespace quorda::bench {

namespace {

int RankIn(const std::vector<std::string>& List, const std::string& Name) {
    const auto it = std::find(List.begin(), List.end(), Name);
    return it == List.end() ? static_cast<int>(List.size()) : static_cast<int>(it - List.begin());
}

} // namespace

const char* SourceName(TSource Source) {
    switch (Source) {
    case TSource::Sqlite:
        return "sqlite";
    case TSource::Pgsql:
        return "pgsql";
    case TSource::Mariadb:
        return "mariadb";
    case TSource::None:
        break;
    }
    return "-";
}

std::vector<TImplementation>& Implementations() {
    static std::vector<TImplementation> list;
    return list;
}

TRegisterRun::TRegisterRun(std::string Workload, std::string Impl, std::string Mode, TRunFactory Create) {
    Implementations().push_back({std::move(Workload), std::move(Impl), std::move(Mode), std::move(Create)});
}

const std::vector<std::string>& WorkloadNames() {
    static const std::vector<std::string> names{"scan",   "scroll", "count",  "insert", "edit",
                                                "params", "export", "import", "grid"};
    return names;
}

int ModeRank(const std::string& Mode) {
    static const std::vector<std::string> modes{"scrollable", "forward", "block",   "loop", "probe",
                                                "prepared",   "array",   "markers", "post", "check"};
    return RankIn(modes, Mode);
}

int ImplRank(const std::string& Impl) {
    static const std::vector<std::string> impls{"raw", "quorda", "view", "multi", "qtsql", "grid"};
    return RankIn(impls, Impl);
}

std::vector<const TImplementation*> SortedImplementations() {
    std::vector<const TImplementation*> sorted;
    for (const auto& impl : Implementations())
        sorted.push_back(&impl);
    const auto key = [](const TImplementation* I) {
        return std::make_tuple(RankIn(WorkloadNames(), I->Workload), I->Impl == "qtsql" ? 1 : 0,
                               ModeRank(I->Mode), ImplRank(I->Impl));
    };
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](const TImplementation* A, const TImplementation* B) { return key(A) < key(B); });
    return sorted;
}

const TImplementation* FindImplementation(const std::string& Workload, const std::string& Impl,
                                          const std::string& Mode) {
    for (const auto& impl : Implementations())
        if (impl.Workload == Workload && impl.Impl == Impl && impl.Mode == Mode)
            return &impl;
    return nullptr;
}

} // namespace quorda::bench
