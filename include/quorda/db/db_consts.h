#pragma once

namespace quorda {

// Messages of the dataset framework (printf-style placeholders for DatabaseErrorFmt). These are the
// framework's own texts, separate from the component message table of the ODBC layer.

inline constexpr char SActiveDataset[] = "Operation cannot be performed on an active dataset";
inline constexpr char SInactiveDataset[] = "Operation cannot be performed on an inactive dataset";
inline constexpr char SNotEditing[] = "Dataset not in edit or insert mode";
inline constexpr char SDatasetReadOnly[] = "Dataset is read-only.";
inline constexpr char SDatasetEmpty[] = "The dataset is empty";
inline constexpr char SUniDirectional[] = "Operation cannot be performed on an unidirectional dataset";
inline constexpr char SNoSuchRecord[] = "Could not find the requested record.";
inline constexpr char SInvalidBookmark[] = "Invalid bookmark";
inline constexpr char STooManyFields[] = "More fields specified than really exist";
inline constexpr char SErrNoFieldsDefined[] =
    "Can not create a dataset when there are no fielddefinitions or fields defined";
inline constexpr char SCircularDataLink[] = "Circular datasource references are not allowed.";

inline constexpr char SFieldNotFound[] = "Field not found: \"%s\"";
inline constexpr char SDuplicateFieldName[] = "Duplicate fieldname : \"%s\"";
inline constexpr char SNeedFieldName[] = "Field needs a name";
inline constexpr char SNeedField[] = "Field %s is required, but not supplied.";
inline constexpr char SNoDataset[] = "No dataset assigned for field : \"%s\"";
inline constexpr char SUnknownFieldType[] = "Unknown field type : %s";
inline constexpr char SInvalidFieldSize[] = "Invalid field size : %d";
inline constexpr char SInvalidFieldKind[] = "%s : invalid field kind : ";
inline constexpr char SReadOnlyField[] = "Field %s cannot be modified, it is read-only.";

inline constexpr char SFieldIsNull[] = "Field %s is null";
inline constexpr char SInvalidTypeConversion[] = "Invalid type conversion to %s in field %s";
inline constexpr char SFieldValueError[] = "Invalid value for field '%s'";
inline constexpr char SFieldError[] = "Field \"%s\" error: ";
inline constexpr char SNotAnInteger[] = "\"%s\" is not a valid integer";
inline constexpr char SNotAFloat[] = "\"%s\" is not a valid float";
inline constexpr char SNotABoolean[] = "\"%s\" is not a valid boolean";
inline constexpr char SNotACurrency[] = "\"%s\" is not a valid currency";
inline constexpr char SRangeError[] = "%s is not between %s and %s.";
inline constexpr char SInvalidDisplayValues[] = "\"%s\" are not valid boolean displayvalues";
inline constexpr char SInvalidVariant[] = "Invalid variant value";

} // namespace quorda
