#pragma once

#include <string>

namespace fabscope::internal {

enum EnFabricErrLevel_t : int {
  EN_FABRIC_ERR_WARNING = 2,
  EN_FABRIC_ERR_ERROR = 3,
};

// A finding as the tool lists it beside those of its other stages: one text line and one line of
// the CSV report, both complete once the record is made. Whoever holds the vector that a record was
// appended to owns it.
class FabricErrGeneral {
 public:
  FabricErrGeneral() = default;
  FabricErrGeneral(const FabricErrGeneral&) = delete;
  FabricErrGeneral& operator=(const FabricErrGeneral&) = delete;
  virtual ~FabricErrGeneral() = default;

  virtual std::string GetCSVErrorLine() = 0;  // without a line end
  virtual std::string GetErrorLine() = 0;     // without tag and line end
  virtual EnFabricErrLevel_t GetLevel() { return level; }
  virtual void SetLevel(EnFabricErrLevel_t newLevel) { level = newLevel; }
  virtual bool GetDumpCSVOnly() { return dumpCsvOnly; }
  virtual void SetDumpCSVOnly(bool csvOnly) { dumpCsvOnly = csvOnly; }

 protected:
  std::string scope = "UNKNOWN";
  std::string description = "UNKNOWN";
  std::string errType = "UNKNOWN";
  EnFabricErrLevel_t level = EN_FABRIC_ERR_ERROR;
  bool dumpCsvOnly = false;
};

}  // namespace fabscope::internal
