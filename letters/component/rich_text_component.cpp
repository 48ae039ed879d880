#include "letters/component/rich_text_component.h"

#include <olectl.h>

#include <array>
#include <cstddef>
#include <string>

#include "letters/component/control_host.h"
#include "letters/component/rich_text_control.h"
#include "platform/com/com_object.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kProgramId[] = L"Tx4oleLib.TXTextControl";

// The dispatch identifiers of the component.
constexpr DISPID kLoad = 99;
constexpr DISPID kSave = 100;
constexpr DISPID kDocumentPageValue = 112;
constexpr std::array<DISPID, TextControl::kPageValues> kPageSettings{12, 13, 22, 23, 24, 25};

DISPID PageSettingAt(int index) {
  if (index < 0 || index >= TextControl::kPageValues) throw InvalidProcedureCall();
  return kPageSettings[static_cast<std::size_t>(index)];
}

class RichTextComponent : public TextControl {
 public:
  RichTextComponent() : control_(ComObject::Create(kProgramId)), host_(control_.Dispatch()) {}

  void Load(const std::wstring& path, std::int16_t offset, std::int16_t format) override {
    CallWithFile(kLoad, path, offset, format);
  }
  void Save(const std::wstring& path, std::int16_t offset, std::int16_t format) override {
    CallWithFile(kSave, path, offset, format);
  }
  std::int32_t DocumentPageValue(int index) const override {
    return control_.Get(kDocumentPageValue, {Variant(std::int32_t{index})}).ToInteger();
  }
  void SetDocumentPageValue(int index, std::int32_t value) override {
    control_.Put(kDocumentPageValue, {Variant(std::int32_t{index}), Variant(value)});
  }
  std::int32_t PageSetting(int index) const override {
    return control_.Get(PageSettingAt(index)).ToInteger();
  }
  void SetPageSetting(int index, std::int32_t value) override {
    control_.Put(PageSettingAt(index), {Variant(value)});
  }

 private:
  void CallWithFile(DISPID member, const std::wstring& path, std::int16_t offset,
                    std::int16_t format) {
    Variant path_text(path);
    control_.Call(member, {Variant::ReferenceToText(path_text), Variant(offset), Variant(format)});
  }

  ComApartment apartment_;
  ComObject control_;
  ControlHost host_;
};

}  // namespace

std::unique_ptr<TextControl> NewWindowsTextControl(System& system, const CodePages& code_pages,
                                                   ConvertedFiles* converted) {
  if (FindClass(kProgramId)) {
    try {
      return std::make_unique<RichTextComponent>();
    } catch (const RuntimeError& error) {
      if (error.number != CLASS_E_NOTLICENSED) throw;
      system.Warn(std::wstring(kProgramId) + L": " + error.description);
    }
  }
  return std::make_unique<RichTextControl>(system, code_pages, converted);
}

}  // namespace pxscheduler
