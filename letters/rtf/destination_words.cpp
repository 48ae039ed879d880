#include <cstdint>
#include <string>
#include <string_view>

#include "letters/rtf/reading.h"

namespace pxscheduler {
namespace {

template <Destination kDestination>
void Begin(Reading& reading, const Word&) {
  reading.Begin(kDestination);
}

// A group around content that counts as if the group were not there.
void PassThrough(Reading&, const Word&) {}

template <std::int32_t Shape::*kValue>
void SetShapeValue(Reading& reading, const Word& word) {
  if (!reading.shapes.empty()) reading.shapes.back().*kValue = word.Or(0);
}

template <std::int32_t PictureInProgress::*kValue>
void SetPictureValue(Reading& reading, const Word& word) {
  reading.picture.*kValue = word.Or(0);
}

template <PictureInProgress::Kind kKind>
void SetPictureKind(Reading& reading, const Word&) {
  reading.picture.kind = kKind;
}

}  // namespace

void AddDestinationWords(WordTable& words) {
  using Kind = PictureInProgress::Kind;
  const auto add = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, false};
  };
  const auto begin = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, true};
  };
  // Destinations that are written without \*, so that not knowing them would show their text.
  for (const char* unseen :
       {"annotation", "atnauthor", "atndate",   "atnicn",    "atnid",   "atnparent",  "atnref",
        "atntime",    "atrfend",   "atrfstart", "datafield", "fontemb", "fontfile",   "footer",
        "footerf",    "footerl",   "footerr",   "formfield", "ftncn",   "ftnsep",     "ftnsepc",
        "header",     "headerf",   "headerl",   "headerr",   "info",    "nonshppict", "objclass",
        "objdata",    "objname",   "private",   "revtbl",    "rxe",     "shprslt",    "tc",
        "tcn",        "template",  "txe",       "xe",        "xmlopen"})
    begin(unseen, Begin<Destination::kSkip>);

  begin("field", [](Reading& r, const Word&) { r.BeginField(); });
  begin("fldinst", [](Reading& r, const Word&) {
    if (r.InBody())
      r.Begin(Destination::kFieldInstruction);
    else
      r.Begin(Destination::kSkip);
  });
  begin("fldrslt", [](Reading& r, const Word&) {
    if (!r.fields.empty() && r.fields.back().link != 0) r.state.link = r.fields.back().link;
  });
  begin("bkmkstart", Begin<Destination::kBookmark>);

  begin("footnote", [](Reading& r, const Word&) {
    if (!r.InBody()) return;
    ++r.notes;
    r.BeginStory(DocumentBuilder::StoryKind::kNote);
  });
  add("chftn", [](Reading& r, const Word&) {
    // In the text, the number comes before the note.
    const bool in_note = r.builder.InNote();
    r.AppendText(std::to_wstring(in_note ? r.notes : r.notes + 1));
  });

  for (const char* transparent : {"shp", "shppict", "object", "result", "shpgrp"})
    begin(transparent, PassThrough);
  begin("upr", Begin<Destination::kSkipText>);
  begin("ud", [](Reading& r, const Word&) { r.BeginUnicodeText(); });
  begin("shpinst", [](Reading& r, const Word&) { r.BeginShape(); });
  add("shpleft", SetShapeValue<&Shape::left>);
  add("shptop", SetShapeValue<&Shape::top>);
  add("shpright", SetShapeValue<&Shape::right>);
  add("shpbottom", SetShapeValue<&Shape::bottom>);
  begin("sp", Begin<Destination::kSkipText>);
  begin("sn", Begin<Destination::kPropertyName>);
  begin("sv", Begin<Destination::kPropertyValue>);
  begin("picprop", [](Reading& r, const Word&) {
    r.Begin(Destination::kSkipText);
    r.state.in_picture_properties = true;
  });
  begin("shptxt", [](Reading& r, const Word&) { r.BeginStory(DocumentBuilder::StoryKind::kBox); });

  begin("pict", [](Reading& r, const Word&) { r.BeginPicture(); });
  add("pngblip", SetPictureKind<Kind::kPng>);
  add("jpegblip", SetPictureKind<Kind::kJpeg>);
  add("dibitmap", SetPictureKind<Kind::kDib>);
  add("wmetafile", SetPictureKind<Kind::kMetafile>);
  add("emfblip", SetPictureKind<Kind::kMetafile>);
  add("picw", SetPictureValue<&PictureInProgress::width>);
  add("pich", SetPictureValue<&PictureInProgress::height>);
  add("picwgoal", SetPictureValue<&PictureInProgress::width_goal>);
  add("pichgoal", SetPictureValue<&PictureInProgress::height_goal>);
  add("picscalex", SetPictureValue<&PictureInProgress::scale_x>);
  add("picscaley", SetPictureValue<&PictureInProgress::scale_y>);
  add("piccropl", SetPictureValue<&PictureInProgress::crop_left>);
  add("piccropt", SetPictureValue<&PictureInProgress::crop_top>);
  add("piccropr", SetPictureValue<&PictureInProgress::crop_right>);
  add("piccropb", SetPictureValue<&PictureInProgress::crop_bottom>);
}

}  // namespace pxscheduler
