#include "property/stage_run.h"

#include "fat_tree/link_errors.h"
#include "platform/reg_exp.h"
#include "reference/plain_model.h"

namespace fabscope::internal {

StageRun::StageRun(const reference::PlainCase& what)
    : model(reference::ModelOf(what.fabric)), options_(what.options) {
  topology = std::make_unique<FTTopology>(model.get(), &out_, options_.mergePercent);
  topology->Show_GUID = options_.showGuid;
}

StageRun::~StageRun() {
  for (const FabricErrGeneral* error : errors) delete error;
}

std::string StageRun::TakeOutput() {
  std::string text = out_.str();
  out_.str("");
  return text;
}

void StageRun::Build() {
  switch (options_.roots) {
    case reference::PlainRoots::Auto:
      buildStatus = topology->Build(errors, message, options_.retries, options_.equal);
      break;
    case reference::PlainRoots::Smdb:
      buildStatus = topology->Build(errors, message);
      break;
    case reference::PlainRoots::Regex: {
      regExp expression(options_.rootRegex);
      buildStatus = topology->Build(errors, message, expression);
      break;
    }
  }
  buildText = TakeOutput();
}

void StageRun::Validate() {
  if (buildStatus != 0) return;
  validateStatus = topology->Validate(errors, message);
  validateText = TakeOutput();
}

void StageRun::Dump() {
  if (validateStatus != 0) return;
  topology->Dump();
  dumpText = TakeOutput();
}

bool StageRun::RunAll() {
  Build();
  Validate();
  Dump();
  return validateStatus == 0;
}

std::vector<const FTNeighborhood*> StageRun::Groups() const {
  std::vector<const FTNeighborhood*> all;
  for (const auto& groups : topology->GetNeighborhoods()) {
    all.insert(all.end(), groups.begin(), groups.end());
  }
  return all;
}

std::vector<std::string> StageRun::Records(const std::string& event) const {
  std::vector<std::string> texts;
  for (FabricErrGeneral* error : errors) {
    if (error->GetCSVErrorLine().find("," + event + ",") != std::string::npos)
      texts.push_back(error->GetErrorLine());
  }
  return texts;
}

}  // namespace fabscope::internal
