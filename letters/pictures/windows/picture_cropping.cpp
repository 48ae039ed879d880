#include "letters/pictures/picture_cropping.h"

#include <objbase.h>
#include <wincodec.h>
#include <windows.h>

#include <memory>

namespace pxscheduler {
namespace {

constexpr float kJpegQuality = 0.9F;

struct Release {
  void operator()(IUnknown* object) const { object->Release(); }
};

template <typename Interface>
using Owned = std::unique_ptr<Interface, Release>;

// What a call of the form create(&object) makes; null where it fails.
template <typename Interface, typename Create>
Owned<Interface> Make(Create create) {
  Interface* made = nullptr;
  if (FAILED(create(&made))) return nullptr;
  return Owned<Interface>(made);
}

// Threads that use COM have to say so; a thread that has may say it again.
class ComThread {
 public:
  ComThread() : result_(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ComThread(const ComThread&) = delete;
  ComThread& operator=(const ComThread&) = delete;
  ~ComThread() {
    if (SUCCEEDED(result_)) ::CoUninitialize();
  }

 private:
  HRESULT result_;
};

struct PictureForm {
  GUID container;
  WICPixelFormatGUID pixels;
};

// The part of the picture in the pixels of its form. Reads the picture, which must stay, when it is
// read itself.
Owned<IWICFormatConverter> DecodePart(IWICImagingFactory& factory, std::string& picture,
                                      const PictureCropping& cropping, const PictureForm& form,
                                      PixelRectangle& part) {
  const auto stream =
      Make<IWICStream>([&](IWICStream** made) { return factory.CreateStream(made); });
  if (!stream || FAILED(stream->InitializeFromMemory(reinterpret_cast<BYTE*>(picture.data()),
                                                     static_cast<DWORD>(picture.size()))))
    return nullptr;
  const auto decoder = Make<IWICBitmapDecoder>([&](IWICBitmapDecoder** made) {
    return factory.CreateDecoderFromStream(stream.get(), nullptr, WICDecodeMetadataCacheOnDemand,
                                           made);
  });
  if (!decoder) return nullptr;
  const auto frame = Make<IWICBitmapFrameDecode>(
      [&](IWICBitmapFrameDecode** made) { return decoder->GetFrame(0, made); });
  UINT width = 0;
  UINT height = 0;
  if (!frame || FAILED(frame->GetSize(&width, &height)) || width == 0 || height == 0 ||
      std::uint64_t{width} * height > kMostPixels)
    return nullptr;
  part = PixelsLeft(cropping, width, height);
  const WICRect rectangle{static_cast<INT>(part.left), static_cast<INT>(part.top),
                          static_cast<INT>(part.width), static_cast<INT>(part.height)};
  const auto clipper = Make<IWICBitmapClipper>(
      [&](IWICBitmapClipper** made) { return factory.CreateBitmapClipper(made); });
  if (!clipper || FAILED(clipper->Initialize(frame.get(), &rectangle))) return nullptr;
  auto converter = Make<IWICFormatConverter>(
      [&](IWICFormatConverter** made) { return factory.CreateFormatConverter(made); });
  if (!converter ||
      FAILED(converter->Initialize(clipper.get(), form.pixels, WICBitmapDitherTypeNone, nullptr, 0,
                                   WICBitmapPaletteTypeCustom)))
    return nullptr;
  return converter;
}

// Without effect on a container that has no such option.
void SetJpegQuality(IPropertyBag2& options) {
  wchar_t name[] = L"ImageQuality";
  PROPBAG2 option{};
  option.pstrName = name;
  VARIANT quality{};
  quality.vt = VT_R4;
  quality.fltVal = kJpegQuality;
  static_cast<void>(options.Write(1, &option, &quality));
}

bool Encode(IWICImagingFactory& factory, IWICBitmapSource& part, const PixelRectangle& size,
            const PictureForm& form, IStream& stream) {
  const auto encoder = Make<IWICBitmapEncoder>([&](IWICBitmapEncoder** made) {
    return factory.CreateEncoder(form.container, nullptr, made);
  });
  if (!encoder || FAILED(encoder->Initialize(&stream, WICBitmapEncoderNoCache))) return false;
  Owned<IWICBitmapFrameEncode> frame;
  const auto options = Make<IPropertyBag2>([&](IPropertyBag2** made) {
    IWICBitmapFrameEncode* made_frame = nullptr;
    const HRESULT result = encoder->CreateNewFrame(&made_frame, made);
    frame.reset(made_frame);
    return result;
  });
  if (!frame || !options) return false;
  if (form.container == GUID_ContainerFormatJpeg) SetJpegQuality(*options);
  WICPixelFormatGUID pixels = form.pixels;
  return SUCCEEDED(frame->Initialize(options.get())) &&
         SUCCEEDED(frame->SetSize(size.width, size.height)) &&
         SUCCEEDED(frame->SetPixelFormat(&pixels)) && pixels == form.pixels &&
         SUCCEEDED(frame->WriteSource(&part, nullptr)) && SUCCEEDED(frame->Commit()) &&
         SUCCEEDED(encoder->Commit());
}

std::optional<std::string> ContentOf(IStream& stream) {
  STATSTG status{};
  if (FAILED(stream.Stat(&status, STATFLAG_NONAME))) return std::nullopt;
  if (FAILED(stream.Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr))) return std::nullopt;
  std::string content(static_cast<std::size_t>(status.cbSize.QuadPart), '\0');
  ULONG count = 0;
  if (FAILED(stream.Read(content.data(), static_cast<ULONG>(content.size()), &count)) ||
      count != content.size())
    return std::nullopt;
  return content;
}

std::optional<std::string> Crop(std::string picture, const PictureCropping& cropping,
                                const PictureForm& form) {
  const ComThread com_thread;
  const auto factory = Make<IWICImagingFactory>([](IWICImagingFactory** made) {
    return ::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                              __uuidof(IWICImagingFactory), reinterpret_cast<void**>(made));
  });
  if (!factory) return std::nullopt;
  PixelRectangle size;
  const auto part = DecodePart(*factory, picture, cropping, form, size);
  const auto stream =
      Make<IStream>([](IStream** made) { return ::CreateStreamOnHGlobal(nullptr, TRUE, made); });
  if (!part || !stream || !Encode(*factory, *part, size, form, *stream)) return std::nullopt;
  return ContentOf(*stream);
}

}  // namespace

std::optional<std::string> CropPicture(std::string_view picture, const PictureCropping& cropping) {
  if (picture.starts_with("\x89PNG\r\n\x1A\n"))
    return Crop(std::string(picture), cropping,
                {GUID_ContainerFormatPng, GUID_WICPixelFormat32bppBGRA});
  if (picture.starts_with("\xFF\xD8\xFF"))
    return Crop(std::string(picture), cropping,
                {GUID_ContainerFormatJpeg, GUID_WICPixelFormat24bppBGR});
  return std::nullopt;
}

}  // namespace pxscheduler
