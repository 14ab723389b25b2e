#include "fbx/io/fbx_reader.h"

FbxReader::FbxReader(FbxManager& manager, int pluginId, FbxStatus& status)
    : manager_(manager), status_(status), pluginId_(pluginId) {}

FbxReader::~FbxReader() = default;

bool FbxReader::GetVersion(int& major, int& minor, int& revision) {
    major = minor = revision = 0;
    return false;
}

bool FbxReader::OpenStream(FbxFile*) { return false; }

bool FbxReader::Open(const char* fileName, int flags) {
    openFlags_ = flags & (eParseForGlobalSettings | eParseForStatistics);
    return OpenFile(fileName);
}

bool FbxReader::OpenStreamData(FbxFile*, void*) { return false; }

bool FbxReader::ReadOptions(bool) { return true; }

bool FbxReader::ReadObjectProperties(FbxObject*) { return false; }

bool FbxReader::GetAxisInfo(FbxAxisInfo&) { return false; }

bool FbxReader::GetStatistics(FbxStatistics&) { return false; }

bool FbxReader::GetFrameRate(int&) { return false; }

FbxDocumentInfo* FbxReader::GetSceneInfo() { return nullptr; }

const std::vector<FbxTakeInfo>* FbxReader::GetTakeInfos() { return nullptr; }

void FbxReader::GetHeaderInfo(FbxHeaderInfo&) {}
