#pragma once

#include "operator/operator_world.h"

namespace tarnex {

// The history of the service, open to be read. Throws Failure where it cannot be.
class HistoryFile {
  public:
    explicit HistoryFile(const OperatorWorld& world);
    // Whether there is one, which perhaps cannot be read.
    static bool IsThere(const OperatorWorld& world);
    std::vector<HistoryRow> Rows(const HistoryQuery& query);

  private:
    Failure Unreadable(const std::string& trouble) const;

    const std::string path_;
    std::unique_ptr<FileOwners::Acting> acting_; // reading makes files beside it
    std::unique_ptr<HistoryReader> reader_;
};

} // namespace tarnex
