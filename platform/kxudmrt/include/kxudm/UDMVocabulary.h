// The words of the persisted model: attribute keys, flags, class names, relation names, data types.
//
// Data carries them, so their values never change.
#pragma once

namespace kxudm::vocabulary {

// Keys of system attributes.
namespace attribute {
inline constexpr char SMD_CONTENTREVISION[] = "smd_contentrevision";
inline constexpr char SMD_CREATEDUSER[] = "smd_createduser";
inline constexpr char SMD_CREATIME[] = "smd_creatime";
inline constexpr char SMD_CTIME[] = "smd_ctime";
inline constexpr char SMD_USER[] = "smd_user";
inline constexpr char SMD_FOLDER[] = "smd_folder";
inline constexpr char SMD_ADDNLATTR[] = "smd_addnlattr";
inline constexpr char SMD_BRANCH[] = "smd_branch";
inline constexpr char SMD_BRANCHEDTIME[] = "smd_branchedtime";
inline constexpr char SMD_BRANCHFROM[] = "smd_branchfrom";
inline constexpr char SMD_BRANCHFROMVER[] = "smd_branchfromver";
inline constexpr char SMD_BRANCHPATH[] = "smd_branchpath";
inline constexpr char SMD_CATEGORY[] = "smd_category";
inline constexpr char SMD_CATTYPE[] = "smd_cattype";
inline constexpr char SMD_CHILDREN[] = "smd_children";
inline constexpr char SMD_CID[] = "smd_cid";
inline constexpr char SMD_CNTCREATIME[] = "smd_cntcreatime";
inline constexpr char SMD_COMMENT[] = "smd_comment";
inline constexpr char SMD_CTYPE[] = "smd_ctype";
inline constexpr char SMD_CTYPEDN[] = "smd_ctypedn";
inline constexpr char SMD_DBVERSION[] = "smd_dbversion";
inline constexpr char SMD_DEFAULTPI[] = "smd_defaultpi";
inline constexpr char SMD_DELETED[] = "smd_deleted";
inline constexpr char SMD_EXTERNALFILE[] = "smd_externalfile";
inline constexpr char SMD_FILEHASH[] = "smd_filehash";
inline constexpr char SMD_FILEID[] = "smd_fileid";
inline constexpr char SMD_FILELASTMODIFIED[] = "smd_filelastmodified";
inline constexpr char SMD_FILEVERSION[] = "smd_fileversion";
inline constexpr char SMD_FIRST[] = "smd_first";
inline constexpr char SMD_FIRSTCURREV[] = "smd_firstcurrev";
inline constexpr char SMD_FIRSTFROM[] = "smd_firstfrom";
inline constexpr char SMD_FIRSTTO[] = "smd_firstto";
inline constexpr char SMD_FIRSTTYPE[] = "smd_firsttype";
inline constexpr char SMD_FULLNAME[] = "smd_fullname";
inline constexpr char SMD_GDOCTYPE[] = "smd_gdoctype";
inline constexpr char SMD_HISTORYRES[] = "smd_historyres";
inline constexpr char SMD_ID[] = "smd_id";
inline constexpr char SMD_IMPLICIT[] = "smd_implicit";
inline constexpr char SMD_INTEGRATIONPT[] = "smd_integrationpt";
inline constexpr char SMD_LIBID[] = "smd_libid";
inline constexpr char SMD_LSTMODTIME[] = "smd_lstmodtime";
inline constexpr char SMD_OWNERLOCKED[] = "smd_ownerlocked";
inline constexpr char SMD_PARENTID[] = "smd_parentid";
inline constexpr char SMD_PARSECONTENT[] = "smd_parsecontent";
inline constexpr char SMD_PARSEDATA[] = "smd_parsedata";
inline constexpr char SMD_PARSEDOCINFO[] = "smd_parsedocinfo";
inline constexpr char SMD_PARSEFILE[] = "smd_parsefile";
inline constexpr char SMD_PARSEFILENAME[] = "smd_parsefilename";
inline constexpr char SMD_PARSEPFINFO[] = "smd_parsepfinfo";
inline constexpr char SMD_PARSESTATUS[] = "smd_parsestatus";
inline constexpr char SMD_PREVIEWNAME[] = "smd_previewname";
inline constexpr char SMD_REFCOUNT[] = "smd_refcount";
inline constexpr char SMD_REFERENCE[] = "smd_reference";
inline constexpr char SMD_RELATIONTYPE[] = "smd_relationtype";
inline constexpr char SMD_SECOND[] = "smd_second";
inline constexpr char SMD_SECONDCURREV[] = "smd_secondcurrev";
inline constexpr char SMD_SECONDFROM[] = "smd_secondfrom";
inline constexpr char SMD_SECONDTO[] = "smd_secondto";
inline constexpr char SMD_SECONDTYPE[] = "smd_secondtype";
inline constexpr char SMD_SYSTEM[] = "smd_system";
inline constexpr char SMD_SYSTEMPI[] = "smd_systempi";
inline constexpr char SMD_VAULTROOT[] = "smd_vaultroot";
inline constexpr char SMD_VAULTROOTDIR[] = "smd_vaultrootdir";
inline constexpr char SMD_WSCONTENTREVISION[] = "smd_wscontentrevision";
inline constexpr char SMD_LABEL[] = "SMD_Label";
inline constexpr char SMD_GENERIC_DOCUMENT[] = "SMD_GenericDocument";
inline constexpr char SMDCHILD[] = "smdchild_";
}  // namespace attribute

// Keys of attributes and records without a prefix.
namespace key {
inline constexpr char ADDNLATTR[] = "addnlattr";
inline constexpr char ADDNLINFO[] = "addnlinfo";
inline constexpr char ALLOWDERIVEDCONTENT[] = "allowderivedcontent";
inline constexpr char BRANCHNAMELIST[] = "branchnamelist";
inline constexpr char CHILDID[] = "childid";
inline constexpr char CHILDINDEX[] = "childindex";
inline constexpr char CHILDRELTYPE[] = "childreltype";
inline constexpr char CLIATTRBS[] = "cliattrbs";
inline constexpr char CONTENTDEFINITIONTYPE[] = "contentdefinitiontype";
inline constexpr char CONTENTID[] = "contentid";
inline constexpr char CONTENTTYPE[] = "contenttype";
inline constexpr char CREATEDBY[] = "createdby";
inline constexpr char CREATIONDATE[] = "creationdate";
inline constexpr char CURRENTREVISION[] = "currentrevision";
inline constexpr char DESCRIPTION[] = "description";
inline constexpr char DISPLAYNAME[] = "displayname";
inline constexpr char DMFILEPATH[] = "dmfilepath";
inline constexpr char DOCPATH[] = "docpath";
inline constexpr char EXCLUDEINSEARCH[] = "excludeinsearch";
inline constexpr char EXTERNALDESCRIPTION[] = "externaldescription";
inline constexpr char EXTERNALID[] = "externalid";
inline constexpr char EXTERNALSYSTEM[] = "externalsystem";
inline constexpr char EXTERNALTYPE[] = "externaltype";
inline constexpr char FIELD[] = "field";
inline constexpr char FOLDER[] = "folder";
inline constexpr char FROMREVISION[] = "fromrevision";
inline constexpr char FROZEN[] = "frozen";
inline constexpr char FUTURECOUNT[] = "futurecount";
inline constexpr char GENERICDOCID[] = "genericdocid";
inline constexpr char GETUSECOUNT[] = "getusecount";
inline constexpr char IMAGENAME[] = "imagename";
inline constexpr char IMAGEPATH[] = "imagepath";
inline constexpr char IMAGETYPE[] = "imagetype";
inline constexpr char ISDEFPI[] = "isdefpi";
inline constexpr char ISELEVATED[] = "iselevated";
inline constexpr char ISHEAD[] = "ishead";
inline constexpr char ISINRELATION[] = "isinrelation";
inline constexpr char ISPROTOTYPE[] = "isprototype";
inline constexpr char ISROOTENTITY[] = "isrootentity";
inline constexpr char ISTEXT[] = "istext";
inline constexpr char LASTUPDATETIME[] = "lastupdatetime";
inline constexpr char LSTMOD[] = "lstmod";
inline constexpr char MAD[] = "mad";
inline constexpr char MDNAME[] = "mdname";
inline constexpr char MDVALUE[] = "mdvalue";
inline constexpr char MODIFICATIONDATE[] = "modificationdate";
inline constexpr char MODIFIEDBY[] = "modifiedby";
inline constexpr char MODIFIEDSINCEIMPORT[] = "modifiedsinceimport";
inline constexpr char OCCURRENCE_LIST[] = "occurrenceList";
inline constexpr char PARENTCURVER[] = "parentcurver";
inline constexpr char PARENTTYPE[] = "parenttype";
inline constexpr char PARENTURL[] = "parenturl";
inline constexpr char PARENTVERFROM[] = "parentverfrom";
inline constexpr char PARENTVERTO[] = "parentverto";
inline constexpr char PFNAME[] = "pfname";
inline constexpr char PFPATH[] = "pfpath";
inline constexpr char PLMXMLEXTERNALID[] = "plmxmlexternalid";
inline constexpr char PLMXMLOCCREVISION[] = "plmxmloccrevision";
inline constexpr char PLMXMLPRODUCTREVNAME[] = "plmxmlproductrevname";
inline constexpr char PLMXMLPRODUCTREVNAMECAD[] = "plmxmlproductrevnamecad";
inline constexpr char PLMXMLPRODUCTREVSUBTYPE[] = "plmxmlproductrevsubtype";
inline constexpr char PREVIEWIMAGES[] = "previewimages";
inline constexpr char PROTOINSTANCEREF[] = "protoinstanceref";
inline constexpr char PROXYCDEF[] = "proxycdef";
inline constexpr char PROXYCREATEDFROMLIVE[] = "proxycreatedfromlive";
inline constexpr char PROXYSRCUID[] = "proxysrcuid";
inline constexpr char REGEXPFALLBACKCHAR[] = "regexpfallbackchar";
inline constexpr char RELTRACER[] = "reltracer";
inline constexpr char REPOID[] = "repoid";
inline constexpr char ROOTENTITYURL[] = "rootentityurl";
inline constexpr char SEQUENCEID[] = "sequenceid";
inline constexpr char SRCFILEPATH[] = "srcfilepath";
inline constexpr char SRCINFO[] = "srcinfo";
inline constexpr char TOREVISION[] = "torevision";
inline constexpr char TRFMTX[] = "trfmtx";
inline constexpr char TRFMTXISREL[] = "trfmtxisrel";
inline constexpr char UNAME[] = "uname";
inline constexpr char URLLIST[] = "urllist";
inline constexpr char URLPATH[] = "urlpath";
inline constexpr char VALIDCONTENTTYPE[] = "validcontenttype";
inline constexpr char VERSION[] = "version";
inline constexpr char VERSIONSTR[] = "versionstr";
inline constexpr char WORKSPACE[] = "workspace";
inline constexpr char WSNAME[] = "wsname";
}  // namespace key

// Flags of definitions.
namespace flag {
inline constexpr char UDM_BASE_CLASS_NAME[] = "udm_BaseClassName";
inline constexpr char UDM_BRANCH_ON_ENTITY_EDIT[] = "udm_BranchOnEntityEdit";
inline constexpr char UDM_CAN_BRANCH[] = "udm_CanBranch";
inline constexpr char UDM_OCCURRENCE[] = "udm_Occurrence";
inline constexpr char UDM_PROTO[] = "udm_Proto";
inline constexpr char UDM_PROTO_INSTANCE[] = "udm_ProtoInstance";
inline constexpr char UDM_REL_NO_PERSIST[] = "udm_RelNoPersist";
inline constexpr char UDM_IS_ABSTRACT[] = "udm_isAbstract";
inline constexpr char UDM_IS_ALLOWED_DUPLICATE_NAME[] = "udm_isAllowedDuplicateName";
inline constexpr char UDM_IS_ASSOC[] = "udm_isAssoc";
inline constexpr char UDM_IS_BLOCKED[] = "udm_isBlocked";
inline constexpr char UDM_IS_COMPOSITION[] = "udm_isComposition";
inline constexpr char UDM_IS_INTERNAL[] = "udm_isInternal";
inline constexpr char UDM_IS_MULTIPLE_PARENTS_ALLOWED[] = "udm_isMultipleParentsAllowed";
inline constexpr char UDM_IS_NON_DISPLAYABLE[] = "udm_isNonDisplayable";
inline constexpr char UDM_IS_PROTO[] = "udm_isProto";
inline constexpr char UDM_IS_PROTO_INSTANCE[] = "udm_isProtoInstance";
inline constexpr char UDM_IS_PROTO_OCC[] = "udm_isProtoOcc";
inline constexpr char UDM_IS_REFERENCE[] = "udm_isReference";
inline constexpr char UDM_MAX_FILE_NR[] = "udm_maxFileNr";
inline constexpr char UDM_MIN_FILE_NR[] = "udm_minFileNr";
}  // namespace flag

// Class names of entities.
namespace entityclass {
inline constexpr char UDMASSEMBLY_DM[] = "UDMAssemblyDM";
inline constexpr char UDMBOA[] = "UDMBOA";
inline constexpr char UDMBOM[] = "UDMBOM";
inline constexpr char UDMBOMCONFIGURED[] = "UDMBOMConfigured";
inline constexpr char UDMBOMSUPER[] = "UDMBOMSuper";
inline constexpr char UDMCLASSIFICATION[] = "UDMClassification";
inline constexpr char UDMCONFIG[] = "UDMConfig";
inline constexpr char UDMCOORDINATE_SYSTEM[] = "UDMCoordinateSystem";
inline constexpr char UDMDSFILE_CAD[] = "UDMDSFileCAD";
inline constexpr char UDMDSFILE_CONN[] = "UDMDSFileConn";
inline constexpr char UDMDSFILE_MESH[] = "UDMDSFileMesh";
inline constexpr char UDMDATA_SOURCE_FILE[] = "UDMDataSourceFile";
inline constexpr char UDMENTITY_DEPOT[] = "UDMEntityDepot";
inline constexpr char UDMENTITY_SET[] = "UDMEntitySet";
inline constexpr char UDMENTITY_SET_CHOICE[] = "UDMEntitySetChoice";
inline constexpr char UDMHIERARCHY[] = "UDMHierarchy";
inline constexpr char UDMITEM[] = "UDMItem";
inline constexpr char UDMITEM_SET[] = "UDMItemSet";
inline constexpr char UDMKPI[] = "UDMKPI";
inline constexpr char UDMKPT[] = "UDMKPT";
inline constexpr char UDMLMFOLDERTYPE[] = "UDMLMFoldertype";
inline constexpr char UDMPART[] = "UDMPart";
inline constexpr char UDMPART_PROTO[] = "UDMPartProto";
inline constexpr char UDMPART_PROTO_INST[] = "UDMPartProtoInst";
inline constexpr char UDMPART_PROTO_OCC[] = "UDMPartProtoOcc";
inline constexpr char UDMPROJECT[] = "UDMProject";
inline constexpr char UDMREP_CONN[] = "UDMRepConn";
inline constexpr char UDMREP_PART_CAD[] = "UDMRepPartCad";
inline constexpr char UDMREP_PART_MESH[] = "UDMRepPartMesh";
inline constexpr char UDMREPRESENTATION[] = "UDMRepresentation";
inline constexpr char UDMREPRESENTATION_CONN[] = "UDMRepresentationConn";
inline constexpr char UDMREPRESENTATION_PART[] = "UDMRepresentationPart";
inline constexpr char UDMSIMULATION[] = "UDMSimulation";
inline constexpr char UDMSUBSYSTEM[] = "UDMSubsystem";
inline constexpr char UDMSUBSYSTEM_INSTANCE[] = "UDMSubsystemInstance";
inline constexpr char UDMSUBSYSTEM_PROTOTYPE[] = "UDMSubsystemPrototype";
inline constexpr char UDMUKEY[] = "UDMUkey";
inline constexpr char UDMCTFOLDER[] = "UDMCTFolder";
inline constexpr char UDMCTITEM[] = "UDMCTItem";
inline constexpr char UDMCTENTITY_COLLECTOR[] = "UDMCTEntityCollector";
}  // namespace entityclass

// Entity factories and plug-ins.
namespace factory {
inline constexpr char UDMDEFAULT_ENTITY_FACTORY[] = "UDMDefaultEntityFactory";
inline constexpr char IUDMENTITY_FACTORY_PLUGIN[] = "IUDMEntityFactoryPlugin";
}  // namespace factory

// Class names of relations.
namespace relationclass {
inline constexpr char UDMRELATION[] = "UDMRelation";
inline constexpr char UDMREL_CURRENT_REP[] = "UDMRelCurrentRep";
inline constexpr char UDMREL_ELEVATION[] = "UDMRelElevation";
inline constexpr char UDMREL_FILE_DOWNLOAD_TRACKER[] = "UDMRelFileDownloadTracker";
inline constexpr char UDMREL_GENERAL[] = "UDMRelGeneral";
inline constexpr char UDMREL_KPI_AGGR[] = "UDMRelKpiAggr";
inline constexpr char UDMREL_KPT_KPI[] = "UDMRelKptKpi";
inline constexpr char UDMREL_PROTO_TO_PROTO[] = "UDMRelProtoToProto";
inline constexpr char UDMREL_TRACEABILITY[] = "UDMRelTraceability";
}  // namespace relationclass

// Class names of query conditions.
namespace condition {
inline constexpr char UDMAND_COND[] = "UDMAndCond";
inline constexpr char UDMCLASS_NAME_COND[] = "UDMClassNameCond";
inline constexpr char UDMCONTENT_DEF_COND[] = "UDMContentDefCond";
}  // namespace condition

// Names of relations and groups.
namespace group {
inline constexpr char OWNER[] = "owner";
inline constexpr char REFERENCE[] = "reference";
inline constexpr char REPRESENTATIONS[] = "representations";
inline constexpr char ASSIGNEDKPTS[] = "assignedkpts";
inline constexpr char CURRENTREP[] = "currentrep";
inline constexpr char EXTERNALFILE[] = "externalfile";
inline constexpr char FILES[] = "files";
inline constexpr char KPI[] = "kpi";
inline constexpr char PARTPROTOS[] = "partprotos";
inline constexpr char PARTPROTOINST[] = "partprotoinst";
inline constexpr char PARTPROTOOCCS[] = "partprotooccs";
inline constexpr char PROTOFILES[] = "protofiles";
inline constexpr char REALIZATIONENTITY[] = "realizationentity";
inline constexpr char SIMULATIONS[] = "simulations";
}  // namespace group

// Kinds of parts.
namespace partkind {
inline constexpr char NORMAL[] = "Normal";
inline constexpr char OCCURRENCE[] = "Occurrence";
inline constexpr char PROTO[] = "Proto";
inline constexpr char PROTO_INSTANCE[] = "ProtoInstance";
}  // namespace partkind

// Data types of attributes.
namespace datatype {
inline constexpr char BOOLEAN[] = "Boolean";
inline constexpr char COLOR[] = "Color";
inline constexpr char DOUBLE[] = "Double";
inline constexpr char STRING[] = "String";
inline constexpr char STRING_LIST[] = "StringList";
inline constexpr char REFERENCE[] = "reference";
}  // namespace datatype

// Keys of categories.
namespace category {
inline constexpr char CATEGORIES[] = "Categories";
inline constexpr char CLIENT_PARSE_FILES[] = "ClientParseFiles";
inline constexpr char CONTENT_TYPES[] = "ContentTypes";
inline constexpr char FOLDERTYPE[] = "Foldertype";
inline constexpr char INDEX[] = "Index";
inline constexpr char LOGICAL[] = "Logical";
inline constexpr char UNIQUE[] = "Unique";
}  // namespace category

// Words of model files.
namespace model {
inline constexpr char MODULE_MODEL[] = "Module Model";
inline constexpr char MODULE_MODEL_P[] = "Module Model.p";
inline constexpr char UDMUKEYREPO[] = "udmukeyrepo";
inline constexpr char ROOT[] = "_root";
inline constexpr char KXCTAFFPID[] = "kxctaffpid";
}  // namespace model

// In the place of a value that was not fetched.
inline constexpr char NOT_RETRIEVED[] = "(Not retrieved)";

// Characters that names of model files don't hold.
inline constexpr char FORBIDDEN_CHARACTERS[] = "[]/\\&~?*|<>\";:+";

}  // namespace kxudm::vocabulary
