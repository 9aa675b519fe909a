#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "handset/export.h"
#include "handset/platform/Strings.h"

/// One row of a vObject template; a template is an array of rows closed by an empty row (name,
/// value and sub all null). Rows are composed in template order.
struct _FormalDef {
  const char* name;       ///< text a matching line begins with; "" in a nested-object row
  const char* separator;  ///< written between name and value (":" or a fixed-format literal)
  const char* value;      ///< sample value or placeholder such as "<url-value>"
  const _FormalDef* sub;  ///< template of a nested object, or null
  int32_t type;           ///< VOBJ_ROW_MANDATORY, VOBJ_ROW_OPTIONAL or VOBJ_ROW_CLOSING
};

enum : int32_t {
  VOBJ_ROW_MANDATORY = 1,
  VOBJ_ROW_OPTIONAL = 2,
  VOBJ_ROW_CLOSING = 4,  ///< the object's END line; mandatory too
};

/// Binding of a placeholder to its real value.
struct HANDSET_API _PropValDef {
  const char* key;  ///< placeholder text, not owned (templates and literals outlive the object)
  CString value;
};

/// Parameter kinds; the code is the kind's number, the name is written as ";NAME=value".
enum : int32_t {
  VOBJ_PARAM_OTHER = 0,  ///< a parameter of another name, kept verbatim
  VOBJ_PARAM_TYPE = 1,
  VOBJ_PARAM_VALUE = 2,
  VOBJ_PARAM_ENCODING = 3,
  VOBJ_PARAM_CHARSET = 4,
  VOBJ_PARAM_LANGUAGE = 5,
};

/// ENCODING values (named without regard to case).
enum : int32_t { VOBJ_ENC_NONE = 0, VOBJ_ENC_BASE64 = 1, VOBJ_ENC_QP = 2 };

/// CHARSET values (named exactly, underscores included: "UTF_8", never "UTF-8").
enum : int32_t {
  VOBJ_CHARSET_NONE = 0,
  VOBJ_CHARSET_SHIFT_JIS = 2,
  VOBJ_CHARSET_UCS2 = 3,
  VOBJ_CHARSET_US_ASCII = 4,
  VOBJ_CHARSET_ISO_8859_1 = 5,
  VOBJ_CHARSET_UTF_7 = 6,
  VOBJ_CHARSET_UTF_8 = 7,
};

/// A parameter of a property line.
struct HANDSET_API VOBJ_PARAM {
  int32_t kind;   ///< VOBJ_PARAM_*
  CString value;  ///< text after '=' (for VOBJ_PARAM_OTHER the whole parameter text)
};

class CProperty;
using CPropertyList = CxTypedPtrList<CProperty*>;
using CPropValList = CxTypedPtrList<_PropValDef*>;

/// One parsed or composed line, or a nested object (then `m_subProps` holds its lines, BEGIN and
/// END included). The value is held as it stands in the text: a QUOTED-PRINTABLE or BASE64 value
/// stays encoded, and is written back as it is. `CVObjLite::GetPropDecodedValue` and
/// `SetPropDecodedValue` decode and encode on request.
class HANDSET_API CProperty {
 public:
  CProperty() = default;
  ~CProperty();
  CProperty(const CProperty& other);
  CProperty& operator=(const CProperty& other);

  /// Builds a property from `line` for template row `row`: the parameters lie between the row's
  /// name and the first ':', the value after it. A row with a fixed-format separator (longer than
  /// ":") takes the value after that separator when the line carries it. False when the line
  /// carries no ':' although the row has a value to carry.
  bool Build(const char* line, const _FormalDef* row);
  /// Adds a parameter of `kind` (VOBJ_PARAM_*) at the end; ENCODING and CHARSET also set the
  /// property's encoding and character set when the text names a known one.
  void AddParam(int32_t kind, const char* value);
  void RemoveAllParams() { m_params.clear(); }
  /// Frees the nested properties.
  void RemoveAllSubProps();
  /// True when a parameter labels the value QUOTED-PRINTABLE (as "ENCODING=..." or bare).
  bool HasQpLabel() const;

  /// Reads an ENCODING parameter text ("ENCODING=BASE64"): the second token at ";=" compared
  /// without regard to case. True only when it names a known encoding.
  static bool ReadEncoding(const char* param, int32_t* encoding);
  /// Reads a CHARSET parameter text ("CHARSET=UTF_8"): the second token compared exactly.
  static bool ReadCharset(const char* param, int32_t* charset);
  static const char* EncodingName(int32_t encoding);  ///< null for an unknown value
  static const char* CharsetName(int32_t charset);    ///< null for an unknown value
  static const char* ParamName(int32_t kind);         ///< null for VOBJ_PARAM_OTHER

  CString m_strName;
  std::vector<VOBJ_PARAM> m_params;
  CString m_strValue;                   ///< as it stands in the text, or a placeholder
  int32_t m_nEncoding = VOBJ_ENC_NONE;  ///< the encoding `m_strValue` (or its binding) is held in
  int32_t m_nCharset = VOBJ_CHARSET_NONE;
  const _FormalDef* m_pFormal = nullptr;  ///< row it was built from; not owned
  bool m_bNested = false;
  CPropertyList m_subProps;  ///< owned
};

/// Parser and writer of line-oriented vObject text against a static template. Subclasses
/// supply the template and the sample from which an empty object is built.
///
/// Values are held as they stand in the text, so `GetPropTableValue` of a quoted-printable value
/// gives the encoded text (decode it with `CQP` or `GetPropDecodedValue`) and `Composing` writes
/// every value as it is held.
class HANDSET_API CVObjLite {
 public:
  /// `formal` is the template; it is never owned and must outlive the object.
  explicit CVObjLite(const _FormalDef* formal);
  virtual ~CVObjLite();
  CVObjLite(const CVObjLite& other);
  CVObjLite& operator=(const CVObjLite& other);

  /// Parses a whole text: quoted-printable values folded with soft line breaks are joined, the
  /// text is split at every CR and LF (empty lines are skipped), then `ParseString` runs against
  /// the template. When the first line is not the template's BEGIN line (or there is no line) the
  /// properties are left as they were; otherwise they are replaced by what the text holds. On
  /// failure `error` (may be null) receives a short reason.
  virtual bool Parsing(char* text, CString* error);
  /// Composes the properties as CRLF-terminated lines. Only when `size` is 0 on entry: allocates
  /// exactly `size` bytes (no NUL) with new[] into `buffer`; the caller owns it (delete[]). A
  /// non-zero `size` on entry writes and allocates nothing. False when a property failed to
  /// compose (the lines before it are still written).
  virtual bool Composing(char*& buffer, int& size);
  /// Parses lines from the front of `lines` against `formal`, appending to `props`. Lines after
  /// the object's closing line stay in `lines`. False when the first line is not the template's
  /// BEGIN line, a mandatory row is missing (error code -1 - row index) or a line matched no row.
  virtual bool ParseString(CStringList& lines, CPropertyList& props, const _FormalDef* formal);
  /// The value of property `name` as it stands in the text, resolved through its placeholder
  /// binding; null when there is no such property, or its placeholder has no binding.
  virtual const char* GetPropTableValue(const char* name);
  /// Stores `value` as the value of property `name` (into its binding when its value is a
  /// placeholder); returns the stored text, or null when there is no property or binding. The
  /// text is written as given: under an ENCODING label it must already be encoded.
  virtual const char* SetPropTableValue(const char* name, const char* value);
  /// Replaces the properties by the object's empty sample.
  virtual bool CreateEmptyProperties() = 0;
  /// 0 after a successful parse; -1 - index of the first missing mandatory row after a failed one.
  virtual int GetErrorCode() { return m_nErrorCode; }

  /// The value of property `name` decoded from the encoding it is held in (quoted-printable by the
  /// rules of `CQP::Decode`, BASE64, or none). False when there is no value or it cannot be
  /// decoded (an escape cut short, malformed base64).
  bool GetPropDecodedValue(const char* name, CString* value);
  /// Encodes `value` into the encoding property `name` is held in and stores it as
  /// `SetPropTableValue` does; returns the stored (encoded) text, or null.
  const char* SetPropDecodedValue(const char* name, const char* value);

  /// The first binding whose key equals `key`, or null.
  _PropValDef* SearchPropValTable(const char* key);
  /// Adds a binding (or sets the value of an existing one) and returns it.
  _PropValDef* AddPropValDef(const char* key, const char* value);
  /// True for a non-empty text that begins with '<' and ends with '>'.
  static bool IsCtrlText(const char* text);
  /// Frees all properties.
  void RemoveAllProperties();
  /// The first lines (at most kSetAsideKept) that matched no template row during the last parse.
  const CStringList& GetSetAsideLines() const { return m_setAside; }
  /// How many lines matched no template row during the last parse; only the first are kept.
  size_t GetSetAsideCount() const { return m_nSetAside; }
  const CPropertyList& GetProperties() const { return m_props; }
  const _FormalDef* GetFormal() const { return m_pFormal; }

  /// Set-aside lines kept for messages; the rest are only counted, so text of any size that the
  /// template does not know costs no memory beyond the text itself.
  static constexpr int kSetAsideKept = 16;

 protected:
  /// Appends the line(s) of `prop` to `lines`; false when it cannot be composed.
  virtual bool _ComposeProperty(CProperty* prop, CStringList& lines);
  /// The sample lines of an empty object.
  virtual void _CreateEmptySample(CStringList& lines) = 0;
  /// Joins quoted-printable values folded with soft line breaks ("=" CR LF) into one line; the
  /// values stay encoded. One pass over the text.
  virtual void _PreprocEscChars(CString& text);
  /// Builds `prop` from `line`, which matched template row `row`; false drops the line (its row
  /// still counts as present). The parse-side counterpart of `_ComposeProperty`: dialects
  /// that hold a property in another shape than the text convert it here.
  virtual bool _ParseProperty(CProperty* prop, const char* line, const _FormalDef* row);

  /// True when `row` is the empty row that closes a template (name, value and sub all null;
  /// separator and type are not looked at). A null pointer counts as empty.
  static bool _IsFormalDefEmpty(const _FormalDef* row);
  static bool _IsFormalDefEmpty(const _FormalDef& row) { return _IsFormalDefEmpty(&row); }

  /// The text line of an ordinary property with `value` as its value: the name, then the row's
  /// fixed-format separator, or the parameters and ':'.
  static CString _ComposeLine(const CProperty& prop, const char* value);
  /// The value of `prop` as held, its placeholder resolved; null when the binding is missing.
  const char* _ResolveValue(const CProperty& prop);
  /// Moves a parsed value behind its row's placeholder (creating the binding when needed).
  void _BindValue(CProperty* prop, const _FormalDef& row);
  /// The property called `name`, searched depth first through nested objects.
  CProperty* _FindProperty(CPropertyList& props, const char* name);

  const _FormalDef* m_pFormal;
  CPropertyList m_props;    ///< owned
  CPropValList m_propVals;  ///< owned
  int m_nErrorCode = 0;
  const _FormalDef* m_pErrorFormal = nullptr;  ///< template the error code indexes
  CStringList m_setAside;
  size_t m_nSetAside = 0;
  bool m_bParseBegun =
      false;  ///< the last Parsing found its BEGIN line and replaced the properties

 private:
  struct ParseCursor;
  bool _ParseRows(ParseCursor& cur, CPropertyList& props, const _FormalDef* formal, int depth);
  bool _ParseLine(ParseCursor& cur, CPropertyList& props, const _FormalDef* formal, size_t rows,
                  int depth, size_t* matched);
  void _SetAside(const CString& line, size_t more);
  void _SplitLines(const CString& text, CStringList& lines);
  void _FreePropVals();
  void _CopyFrom(const CVObjLite& other);

  /// Runs of lines that no template row can match, collapsed by Parsing: the line at `first`
  /// stands for itself and `more` lines after it. Valid while Parsing runs ParseString on
  /// `m_pRunLines`.
  struct LineRun {
    size_t first;
    size_t more;
  };
  std::vector<LineRun> m_runs;
  const CStringList* m_pRunLines = nullptr;
};

/// The text after the first of "http://", "https://", "rtsp://" found in `url` (tried in that
/// order, anywhere in the text); the whole text when none occurs. Null gives "".
HANDSET_API CString _StripURLScheme(const char* url);

/// Standard base64 (RFC 4648) encoding of `size` bytes, without line breaks.
HANDSET_API CString _VObjBase64Encode(const void* data, size_t size);
/// Decodes base64, skipping blanks and line breaks; false on any other foreign character or a
/// malformed end.
HANDSET_API bool _VObjBase64Decode(const char* text, CString* out);
