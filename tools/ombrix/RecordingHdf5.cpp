// The HDF5 form of a recording, compiled only when HDF5 is found (OMBRIX_WITH_HDF5):
//   /iteration  int32 [rows]
//   /time       float64 [rows], NaN for a steady solve
//   /values     float64 [rows x numeric columns], NaN where a value was not exchanged
//   /columns    variable-length strings [numeric columns], the names of the columns of /values
//   /text, /text_columns  the same for string values, when there are any ("" where not exchanged)
#include "ombrix/model/ValueText.h"

#include "Recording.h"
#include "ToolError.h"

#include <hdf5.h>
#include <limits>

namespace Ombrix::Tools
{

namespace
{

// Closes an HDF5 identifier when it goes.
class Handle
{
public:
  Handle(hid_t id, herr_t (*close)(hid_t), const std::string& what) : m_id(id), m_close(close)
  {
    if (id < 0)
      throw ToolError("HDF5 could not " + what);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { m_close(m_id); }
  operator hid_t() const { return m_id; }

private:
  hid_t m_id;
  herr_t (*m_close)(hid_t);
};

void write(hid_t file, const char* name, hid_t fileType, hid_t memoryType, const std::vector<hsize_t>& shape,
           const void* data)
{
  const Handle space(H5Screate_simple(static_cast<int>(shape.size()), shape.data(), nullptr), H5Sclose,
                     std::string("describe the shape of ") + name);
  const Handle set(H5Dcreate2(file, name, fileType, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), H5Dclose,
                   std::string("create the dataset ") + name);
  if (H5Dwrite(set, memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, data) < 0)
    throw ToolError(std::string("HDF5 could not write the dataset ") + name);
}

void writeStrings(hid_t file, const char* name, const std::vector<std::string>& strings,
                  const std::vector<hsize_t>& shape)
{
  const Handle type(H5Tcopy(H5T_C_S1), H5Tclose, "make a string type");
  H5Tset_size(type, H5T_VARIABLE);
  H5Tset_cset(type, H5T_CSET_UTF8);
  std::vector<const char*> pointers;
  for (const auto& text : strings)
    pointers.push_back(text.c_str());
  write(file, name, type, type, shape, pointers.data());
}

} // namespace

void Recording::saveHdf5(const std::string& path) const
{
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); // failures become ToolErrors, not HDF5's own printout
  const Handle file(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT), H5Fclose,
                    "create " + path);
  const hsize_t rows = m_rows.size();
  std::vector<int> iterations;
  std::vector<double> times;
  for (const Row& row : m_rows)
  {
    iterations.push_back(row.iteration);
    times.push_back(row.time);
  }
  write(file, "/iteration", H5T_STD_I32LE, H5T_NATIVE_INT, {rows}, iterations.data());
  write(file, "/time", H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, {rows}, times.data());

  std::vector<std::string> numericNames, textNames;
  std::vector<std::size_t> numeric, text;
  for (std::size_t c = 0; c < m_columns.size(); ++c)
  {
    (m_columns[c].numeric ? numeric : text).push_back(c);
    (m_columns[c].numeric ? numericNames : textNames).push_back(m_columns[c].name);
  }
  std::vector<double> values;
  std::vector<std::string> strings;
  for (const Row& row : m_rows)
  {
    for (const std::size_t c : numeric)
      values.push_back(row.values[c].empty() ? std::numeric_limits<double>::quiet_NaN()
                                             : Model::parseDouble(row.values[c]));
    for (const std::size_t c : text)
      strings.push_back(row.values[c]);
  }
  write(file, "/values", H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, {rows, numeric.size()}, values.data());
  writeStrings(file, "/columns", numericNames, {numericNames.size()});
  if (!text.empty())
  {
    writeStrings(file, "/text", strings, {rows, text.size()});
    writeStrings(file, "/text_columns", textNames, {textNames.size()});
  }
}

} // namespace Ombrix::Tools
