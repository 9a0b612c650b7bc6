//==============================================================================
//                                                                              
//  This file was made by a program from the description of a chip or of        
//  software. It describes that chip or software as its description does,       
//  and claims nothing beyond it.                                               
//  It comes without any warranty, neither that it is free of faults nor that   
//  it is fit for a particular purpose. Who uses it checks it for that use.     
//  The rights in the description, and the terms on which it was given,         
//  extend to this file.                                                        
//                                                                              
//==============================================================================
//                                                                              
//    THIS FILE WAS GENERATED FROM ITS CORRESPONDING XML VERSION WITH VELDMAP.  
//                                                                              
//                       !!! PLEASE DO NOT EDIT !!!                             
//                                                                              
//  $HeadURL$                                                                   
//	$Author$                                                                    
//	$Date$                                                                      
//	$Revision$                                                                  
//                                                                              
//==============================================================================
//
/// @file
//
//==============================================================================

#ifndef _SOC_H_
#define _SOC_H_


#if A == 1
    #include "a.h"
#elif 0
    #include "b.h.h"
#else
    #include "c.h"
#endif
#include "plain.h"

// =============================================================================
//  MACROS
// =============================================================================
#define A                                        (0)

// =============================================================================
//  TYPES
// =============================================================================

int code;

#endif
