# SPDX-License-Identifier: Apache-2.0
"""The messages that are used here, in a shorthand of field:type.

Types: string, int32, int64, double, float, bool, mask (a list of field names), time, list (of any values), the name
of a message, or enum!NAME. [] marks repeated fields, * marks those that the service only ever sends. The type "-"
marks what the service knows and the emulator does not serve. test_schema.py holds all of it against the official
documents where these are at hand."""

SHEETS_MESSAGES = {
    "Spreadsheet": "spreadsheetId:string* properties:SpreadsheetProperties sheets:Sheet[] namedRanges:NamedRange[]"
                   " spreadsheetUrl:string* developerMetadata:- dataSources:- dataSourceSchedules:-",
    "SpreadsheetProperties": "title:string locale:string autoRecalc:enum!RecalculationInterval timeZone:string"
                             " defaultFormat:CellFormat spreadsheetTheme:SpreadsheetTheme"
                             " iterativeCalculationSettings:- importFunctionsExternalUrlAccessAllowed:bool",
    "SpreadsheetTheme": "primaryFontFamily:string themeColors:ThemeColorPair[]",
    "ThemeColorPair": "colorType:enum!ThemeColorType color:ColorStyle",
    "Sheet": "properties:SheetProperties data:GridData[] merges:GridRange[] protectedRanges:ProtectedRange[]"
             " bandedRanges:- basicFilter:- charts:- columnGroups:- conditionalFormats:- developerMetadata:-"
             " filterViews:- rowGroups:- slicers:- tables:-",
    "SheetProperties": "sheetId:int32 title:string index:int32 sheetType:enum!SheetType gridProperties:GridProperties"
                       " hidden:bool tabColor:Color tabColorStyle:ColorStyle rightToLeft:bool"
                       " dataSourceSheetProperties:DataSourceSheetProperties*",
    "DataSourceSheetProperties": "dataSourceId:string columns:- dataExecutionStatus:-",
    "GridProperties": "rowCount:int32 columnCount:int32 frozenRowCount:int32 frozenColumnCount:int32"
                      " hideGridlines:bool rowGroupControlAfter:bool columnGroupControlAfter:bool",
    "GridData": "startRow:int32 startColumn:int32 rowData:RowData[] rowMetadata:DimensionProperties[]"
                " columnMetadata:DimensionProperties[]",
    "DimensionProperties": "hiddenByFilter:bool hiddenByUser:bool pixelSize:int32 developerMetadata:-"
                           " dataSourceColumnReference:-",
    "RowData": "values:CellData[]",
    "CellData": "userEnteredValue:ExtendedValue effectiveValue:ExtendedValue* formattedValue:string*"
                " userEnteredFormat:CellFormat effectiveFormat:CellFormat* hyperlink:string* note:string"
                " chipRuns:- dataSourceFormula:- dataSourceTable:- dataValidation:- pivotTable:- textFormatRuns:-",
    "ExtendedValue": "numberValue:double stringValue:string boolValue:bool formulaValue:string"
                     " errorValue:ErrorValue*",
    "ErrorValue": "type:enum!ErrorType message:string",
    "CellFormat": "numberFormat:NumberFormat backgroundColor:Color backgroundColorStyle:ColorStyle borders:Borders"
                  " padding:Padding horizontalAlignment:enum!HorizontalAlign verticalAlignment:enum!VerticalAlign"
                  " wrapStrategy:enum!WrapStrategy textDirection:enum!TextDirection textFormat:TextFormat"
                  " hyperlinkDisplayType:enum!HyperlinkDisplayType textRotation:TextRotation",
    "NumberFormat": "type:enum!NumberFormatType pattern:string",
    "Color": "red:float green:float blue:float alpha:float",
    "ColorStyle": "rgbColor:Color themeColor:enum!ThemeColorType",
    "Borders": "top:Border bottom:Border left:Border right:Border",
    "Border": "style:enum!BorderStyle width:int32 color:Color colorStyle:ColorStyle",
    "Padding": "top:int32 right:int32 bottom:int32 left:int32",
    "TextFormat": "foregroundColor:Color foregroundColorStyle:ColorStyle fontFamily:string fontSize:int32 bold:bool"
                  " italic:bool strikethrough:bool underline:bool link:Link",
    "Link": "uri:string",
    "TextRotation": "angle:int32 vertical:bool",
    "NamedRange": "namedRangeId:string name:string range:GridRange",
    "ProtectedRange": "protectedRangeId:int32 range:GridRange namedRangeId:string description:string"
                      " warningOnly:bool requestingUserCanEdit:bool* unprotectedRanges:GridRange[] editors:Editors"
                      " tableId:string",
    "Editors": "users:string[] groups:string[] domainUsersCanEdit:bool",
    "GridRange": "sheetId:int32 startRowIndex:int32 endRowIndex:int32 startColumnIndex:int32 endColumnIndex:int32",
    "GridCoordinate": "sheetId:int32 rowIndex:int32 columnIndex:int32",
    "DimensionRange": "sheetId:int32 dimension:enum!Dimension startIndex:int32 endIndex:int32",
    "GetSpreadsheetByDataFilterRequest": "dataFilters:DataFilter[] includeGridData:bool"
                                         " excludeTablesInBandedRanges:bool",
    "DataFilter": "a1Range:string gridRange:GridRange developerMetadataLookup:-",
    "BatchUpdateSpreadsheetRequest": "requests:Request[] includeSpreadsheetInResponse:bool responseRanges:string[]"
                                     " responseIncludeGridData:bool",
    "BatchUpdateSpreadsheetResponse": "spreadsheetId:string replies:Response[] updatedSpreadsheet:Spreadsheet",
    "Request": "addSheet:AddSheetRequest deleteSheet:DeleteSheetRequest"
               " updateSheetProperties:UpdateSheetPropertiesRequest appendDimension:AppendDimensionRequest"
               " deleteDimension:DeleteDimensionRequest insertDimension:InsertDimensionRequest"
               " updateCells:UpdateCellsRequest repeatCell:RepeatCellRequest mergeCells:MergeCellsRequest"
               " unmergeCells:UnmergeCellsRequest autoResizeDimensions:AutoResizeDimensionsRequest"
               " addProtectedRange:AddProtectedRangeRequest deleteProtectedRange:DeleteProtectedRangeRequest"
               " addNamedRange:AddNamedRangeRequest deleteNamedRange:DeleteNamedRangeRequest"
               " updateNamedRange:UpdateNamedRangeRequest"
               " updateSpreadsheetProperties:UpdateSpreadsheetPropertiesRequest"
               " addBanding:- addChart:- addConditionalFormatRule:- addDataSource:- addDimensionGroup:-"
               " addFilterView:- addSlicer:- addTable:- appendCells:- autoFill:- cancelDataSourceRefresh:-"
               " clearBasicFilter:- copyPaste:- createDeveloperMetadata:- cutPaste:- deleteBanding:-"
               " deleteConditionalFormatRule:- deleteDataSource:- deleteDeveloperMetadata:- deleteDimensionGroup:-"
               " deleteDuplicates:- deleteEmbeddedObject:- deleteFilterView:- deleteRange:DeleteRangeRequest deleteTable:-"
               " duplicateFilterView:- duplicateSheet:DuplicateSheetRequest findReplace:- insertRange:- moveDimension:- pasteData:-"
               " randomizeRange:- refreshDataSource:- setBasicFilter:- setDataValidation:- sortRange:-"
               " textToColumns:- trimWhitespace:- updateBanding:- updateBorders:- updateChartSpec:-"
               " updateConditionalFormatRule:- updateDataSource:- updateDeveloperMetadata:- updateDimensionGroup:-"
               " updateDimensionProperties:- updateEmbeddedObjectBorder:- updateEmbeddedObjectPosition:-"
               " updateFilterView:- updateProtectedRange:- updateSlicerSpec:- updateTable:-",
    "Response": "addSheet:AddSheetResponse addProtectedRange:AddProtectedRangeResponse"
                " addNamedRange:AddNamedRangeResponse duplicateSheet:DuplicateSheetResponse",
    "AddSheetRequest": "properties:SheetProperties",
    "AddSheetResponse": "properties:SheetProperties",
    "DeleteSheetRequest": "sheetId:int32",
    "DuplicateSheetRequest": "sourceSheetId:int32 insertSheetIndex:int32 newSheetId:int32 newSheetName:string",
    "DuplicateSheetResponse": "properties:SheetProperties",
    "UpdateSheetPropertiesRequest": "properties:SheetProperties fields:mask",
    "AppendDimensionRequest": "sheetId:int32 dimension:enum!Dimension length:int32",
    "DeleteDimensionRequest": "range:DimensionRange",
    "DeleteRangeRequest": "range:GridRange shiftDimension:enum!Dimension",
    "InsertDimensionRequest": "range:DimensionRange inheritFromBefore:bool",
    "UpdateCellsRequest": "rows:RowData[] fields:mask start:GridCoordinate range:GridRange",
    "RepeatCellRequest": "range:GridRange cell:CellData fields:mask",
    "MergeCellsRequest": "range:GridRange mergeType:enum!MergeCellsRequest.MergeType",
    "UnmergeCellsRequest": "range:GridRange",
    "AutoResizeDimensionsRequest": "dimensions:DimensionRange dataSourceSheetDimensions:-",
    "AddProtectedRangeRequest": "protectedRange:ProtectedRange",
    "AddProtectedRangeResponse": "protectedRange:ProtectedRange",
    "DeleteProtectedRangeRequest": "protectedRangeId:int32",
    "AddNamedRangeRequest": "namedRange:NamedRange",
    "AddNamedRangeResponse": "namedRange:NamedRange",
    "DeleteNamedRangeRequest": "namedRangeId:string",
    "UpdateNamedRangeRequest": "namedRange:NamedRange fields:mask",
    "UpdateSpreadsheetPropertiesRequest": "properties:SpreadsheetProperties fields:mask",
    "CopySheetToAnotherSpreadsheetRequest": "destinationSpreadsheetId:string",
    "ValueRange": "range:string majorDimension:enum!Dimension values:list[]",
    "UpdateValuesResponse": "spreadsheetId:string updatedRange:string updatedRows:int32 updatedColumns:int32"
                            " updatedCells:int32 updatedData:ValueRange",
    "AppendValuesResponse": "spreadsheetId:string tableRange:string updates:UpdateValuesResponse",
    "ClearValuesRequest": "",
    "ClearValuesResponse": "spreadsheetId:string clearedRange:string",
    "BatchGetValuesResponse": "spreadsheetId:string valueRanges:ValueRange[]",
    "BatchGetValuesByDataFilterRequest": "dataFilters:DataFilter[] majorDimension:enum!Dimension"
                                         " valueRenderOption:enum!ValueRenderOption"
                                         " dateTimeRenderOption:enum!DateTimeRenderOption",
    "BatchGetValuesByDataFilterResponse": "spreadsheetId:string valueRanges:MatchedValueRange[]",
    "MatchedValueRange": "valueRange:ValueRange dataFilters:DataFilter[]",
    "BatchClearValuesRequest": "ranges:string[]",
    "BatchClearValuesResponse": "spreadsheetId:string clearedRanges:string[]",
    "BatchUpdateValuesRequest": "valueInputOption:enum!ValueInputOption data:ValueRange[]"
                                " includeValuesInResponse:bool responseValueRenderOption:enum!ValueRenderOption"
                                " responseDateTimeRenderOption:enum!DateTimeRenderOption",
    "BatchUpdateValuesResponse": "spreadsheetId:string totalUpdatedRows:int32 totalUpdatedColumns:int32"
                                 " totalUpdatedCells:int32 totalUpdatedSheets:int32"
                                 " responses:UpdateValuesResponse[]",
}

DRIVE_MESSAGES = {
    "FileList": "kind:string nextPageToken:string incompleteSearch:bool files:File[]",
    "File": "kind:string id:string name:string mimeType:string description:string createdTime:time modifiedTime:time"
            " size:int64* quotaBytesUsed:int64* parents:string[] starred:bool trashed:bool originalFilename:string"
            " webViewLink:string* appProperties:- capabilities:- contentHints:- contentRestrictions:-"
            " copyRequiresWriterPermission:- driveId:- explicitlyTrashed:- exportLinks:- fileExtension:-"
            " folderColorRgb:- fullFileExtension:- hasThumbnail:- headRevisionId:- iconLink:- lastModifyingUser:-"
            " md5Checksum:- owners:- permissionIds:- permissions:- properties:- shared:- spaces:- thumbnailLink:-"
            " version:- viewedByMe:- webContentLink:- writersCanShare:-",
}

ENUMS = {
    "Dimension": "DIMENSION_UNSPECIFIED ROWS COLUMNS",
    "SheetType": "SHEET_TYPE_UNSPECIFIED GRID OBJECT DATA_SOURCE",
    "RecalculationInterval": "RECALCULATION_INTERVAL_UNSPECIFIED ON_CHANGE MINUTE HOUR",
    "ThemeColorType": "THEME_COLOR_TYPE_UNSPECIFIED TEXT BACKGROUND ACCENT1 ACCENT2 ACCENT3 ACCENT4 ACCENT5 ACCENT6"
                      " LINK",
    "ErrorType": "ERROR_TYPE_UNSPECIFIED ERROR NULL_VALUE DIVIDE_BY_ZERO VALUE REF NAME NUM N_A LOADING",
    "NumberFormatType": "NUMBER_FORMAT_TYPE_UNSPECIFIED TEXT NUMBER PERCENT CURRENCY DATE TIME DATE_TIME SCIENTIFIC",
    "HorizontalAlign": "HORIZONTAL_ALIGN_UNSPECIFIED LEFT CENTER RIGHT",
    "VerticalAlign": "VERTICAL_ALIGN_UNSPECIFIED TOP MIDDLE BOTTOM",
    "WrapStrategy": "WRAP_STRATEGY_UNSPECIFIED OVERFLOW_CELL LEGACY_WRAP CLIP WRAP",
    "TextDirection": "TEXT_DIRECTION_UNSPECIFIED LEFT_TO_RIGHT RIGHT_TO_LEFT",
    "HyperlinkDisplayType": "HYPERLINK_DISPLAY_TYPE_UNSPECIFIED LINKED PLAIN_TEXT",
    "BorderStyle": "STYLE_UNSPECIFIED DOTTED DASHED SOLID SOLID_MEDIUM SOLID_THICK NONE DOUBLE",
    "MergeCellsRequest.MergeType": "MERGE_ALL MERGE_COLUMNS MERGE_ROWS",
    "ValueInputOption": "INPUT_VALUE_OPTION_UNSPECIFIED RAW USER_ENTERED",
    "ValueRenderOption": "FORMATTED_VALUE UNFORMATTED_VALUE FORMULA",
    "DateTimeRenderOption": "SERIAL_NUMBER FORMATTED_STRING",
    "InsertDataOption": "OVERWRITE INSERT_ROWS",
}

# Fields of which a message takes one at most.
ONE_OF = {"Request": "kind", "ExtendedValue": "value", "DataFilter": "filter"}
