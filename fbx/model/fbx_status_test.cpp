#include "fbx/model/fbx_status.h"

#include <gtest/gtest.h>

#include <string>

TEST(FbxStatus, CodesCarryTheirDefaultMessagesAndFormattedOnesReplaceThem) {
    FbxStatus status;
    EXPECT_FALSE(status.Error());
    EXPECT_STREQ(status.GetErrorString(), "");

    status.SetCode(FbxStatus::eInvalidFileVersion);
    EXPECT_TRUE(status.Error());
    EXPECT_STREQ(status.GetErrorString(), "Unsupported file version");

    status.SetCode(FbxStatus::eFailure, "File is corrupted %s", "a.fbx");
    EXPECT_EQ(status.GetCode(), FbxStatus::eFailure);
    EXPECT_STREQ(status.GetErrorString(), "File is corrupted a.fbx");

    status.Clear();
    EXPECT_FALSE(status.Error());
}

TEST(FbxStatus, FormattedMessagesStopAt4096Characters) {
    FbxStatus status;
    std::string longText(10000, 'x');
    status.SetCode(FbxStatus::eFailure, "%s", longText.c_str());
    EXPECT_EQ(std::string(status.GetErrorString()).size(), 4095u);
}
