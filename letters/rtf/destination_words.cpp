#include <cstdint>
#include <string>
#include <string_view>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

// A group around content that counts as if the group were not there.
void PassThrough(RtfParser&, const Parameter&) {}

template <std::int32_t Shape::*kValue>
void SetShapeValue(RtfParser& parser, const Parameter& parameter) {
  if (!parser.shapes.empty()) parser.shapes.back().*kValue = parameter.Number();
}

template <std::int32_t PictureInProgress::*kValue>
void SetPictureValue(RtfParser& parser, const Parameter& parameter) {
  parser.picture.*kValue = parameter.Number();
}

template <PictureInProgress::Kind kKind>
void SetPictureKind(RtfParser& parser, const Parameter&) {
  parser.picture.kind = kKind;
}

}  // namespace

void AddDestinationWords(ControlWords& words) {
  using Kind = PictureInProgress::Kind;
  // Destinations that are written without \*, so that not knowing them would show their text.
  words.AddDestination(
      {"annotation", "atnauthor", "atndate",   "atnicn",    "atnid",   "atnparent",  "atnref",
       "atntime",    "atrfend",   "atrfstart", "datafield", "fontemb", "fontfile",   "footer",
       "footerf",    "footerl",   "footerr",   "formfield", "ftncn",   "ftnsep",     "ftnsepc",
       "header",     "headerf",   "headerl",   "headerr",   "info",    "nonshppict", "objclass",
       "objdata",    "objname",   "private",   "revtbl",    "rxe",     "shprslt",    "tc",
       "tcn",        "template",  "txe",       "xe",        "xmlopen"},
      Begin<Destination::kSkip>);

  words.AddDestination("field", [](RtfParser& p, const Parameter&) { p.BeginField(); });
  words.AddDestination("fldinst", [](RtfParser& p, const Parameter&) {
    p.Begin(p.InBody() ? Destination::kFieldInstruction : Destination::kSkip);
  });
  words.AddDestination("fldrslt", [](RtfParser& p, const Parameter&) {
    if (!p.fields.empty() && p.fields.back().link != 0) p.state.link = p.fields.back().link;
  });
  words.AddDestination("bkmkstart", Begin<Destination::kBookmark>);

  words.AddDestination("footnote", [](RtfParser& p, const Parameter&) {
    if (!p.InBody()) return;
    ++p.notes;
    p.BeginStory(DocumentBuilder::StoryKind::kNote);
  });
  words.Add("chftn", [](RtfParser& p, const Parameter&) {
    // In the text, the number comes before the note.
    const bool in_note = p.builder.InNote();
    p.AppendText(std::to_wstring(in_note ? p.notes : p.notes + 1));
  });

  words.AddDestination({"shp", "shppict", "object", "result", "shpgrp"}, PassThrough);
  words.AddDestination("upr", Begin<Destination::kSkipText>);
  words.AddDestination("ud", [](RtfParser& p, const Parameter&) { p.BeginUnicodeText(); });
  words.AddDestination("shpinst", [](RtfParser& p, const Parameter&) { p.BeginShape(); });
  words.Add("shpleft", SetShapeValue<&Shape::left>);
  words.Add("shptop", SetShapeValue<&Shape::top>);
  words.Add("shpright", SetShapeValue<&Shape::right>);
  words.Add("shpbottom", SetShapeValue<&Shape::bottom>);
  words.AddDestination("sp", Begin<Destination::kSkipText>);
  words.AddDestination("sn", Begin<Destination::kPropertyName>);
  words.AddDestination("sv", Begin<Destination::kPropertyValue>);
  words.AddDestination("picprop", [](RtfParser& p, const Parameter&) {
    p.Begin(Destination::kSkipText);
    p.state.in_picture_properties = true;
  });
  words.AddDestination("shptxt", [](RtfParser& p, const Parameter&) {
    p.BeginStory(DocumentBuilder::StoryKind::kBox);
  });

  words.AddDestination("pict", [](RtfParser& p, const Parameter&) { p.BeginPicture(); });
  words.Add("pngblip", SetPictureKind<Kind::kPng>);
  words.Add("jpegblip", SetPictureKind<Kind::kJpeg>);
  words.Add("dibitmap", SetPictureKind<Kind::kDib>);
  words.Add("wmetafile", SetPictureKind<Kind::kMetafile>);
  words.Add("emfblip", SetPictureKind<Kind::kMetafile>);
  words.Add("picw", SetPictureValue<&PictureInProgress::width>);
  words.Add("pich", SetPictureValue<&PictureInProgress::height>);
  words.Add("picwgoal", SetPictureValue<&PictureInProgress::width_goal>);
  words.Add("pichgoal", SetPictureValue<&PictureInProgress::height_goal>);
  words.Add("picscalex", SetPictureValue<&PictureInProgress::scale_x>);
  words.Add("picscaley", SetPictureValue<&PictureInProgress::scale_y>);
  words.Add("piccropl", SetPictureValue<&PictureInProgress::crop_left>);
  words.Add("piccropt", SetPictureValue<&PictureInProgress::crop_top>);
  words.Add("piccropr", SetPictureValue<&PictureInProgress::crop_right>);
  words.Add("piccropb", SetPictureValue<&PictureInProgress::crop_bottom>);
}

}  // namespace pxscheduler
