#include "fbx/model/fbx_anim_stack.h"

#include "fbx/model/fbx_anim_eval_state.h"
#include "fbx/model/fbx_anim_evaluator.h"
#include "fbx/model/fbx_anim_layer.h"
#include "fbx/model/fbx_manager.h"
#include "fbx/model/fbx_take_info.h"

KIVA_FBX_OBJECT_IMPLEMENT(FbxAnimStack)

int FbxAnimStack::sIds[FbxAnimStack::eIdCount] = {-1, -1, -1, -1, -1};

FbxAnimStack::FbxAnimStack(FbxManager& manager, const char* name) : ParentClass(manager, name) {}

void FbxAnimStack::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    if (!ClassId.NeedsPropertyDeclaration()) return;
    FbxProperty root = ClassId.GetRootClassProperty();
    sIds[eDescription] = FbxProperty::Declare(root, "Description", FbxStringDT, FbxString()).GetId();
    sIds[eLocalStart] = FbxProperty::Declare(root, "LocalStart", FbxTimeDT, FbxTime()).GetId();
    sIds[eLocalStop] = FbxProperty::Declare(root, "LocalStop", FbxTimeDT, FbxTime()).GetId();
    sIds[eReferenceStart] = FbxProperty::Declare(root, "ReferenceStart", FbxTimeDT, FbxTime()).GetId();
    sIds[eReferenceStop] = FbxProperty::Declare(root, "ReferenceStop", FbxTimeDT, FbxTime()).GetId();
}

void FbxAnimStack::Construct(const FbxObject* from) {
    ParentClass::Construct(from);
    state_ = std::make_unique<FbxAnimEvalState>();
    FbxAnimEvaluator* evaluator = GetFbxManager()->GetAnimationEvaluator();
    if (evaluator && !evaluator->GetContext()) evaluator->SetContext(this);
}

void FbxAnimStack::Destruct(bool recursive) {
    FbxAnimEvaluator* evaluator = GetFbxManager()->FindAnimationEvaluator();
    if (evaluator && evaluator->GetContext() == this) evaluator->SetContext(nullptr);
    ParentClass::Destruct(recursive);
    state_.reset();
}

int FbxAnimStack::GetLayerCount() const { return GetMemberCount<FbxAnimLayer>(); }

FbxAnimLayer* FbxAnimStack::GetLayer(int index) const { return GetMember<FbxAnimLayer>(index); }

void FbxAnimStack::SetLocalTimeSpan(const FbxTimeSpan& span) {
    LocalStart().Set(span.start);
    LocalStop().Set(span.stop);
}

void FbxAnimStack::SetReferenceTimeSpan(const FbxTimeSpan& span) {
    ReferenceStart().Set(span.start);
    ReferenceStop().Set(span.stop);
}

void FbxAnimStack::Reset(const FbxTakeInfo* takeInfo) {
    Description().Set(takeInfo ? takeInfo->description : FbxString());
    SetLocalTimeSpan(FbxTimeSpan());
    SetReferenceTimeSpan(FbxTimeSpan());
    if (!takeInfo) return;
    SetLocalTimeSpan(takeInfo->localTimeSpan);
    SetReferenceTimeSpan(takeInfo->referenceTimeSpan);
}
